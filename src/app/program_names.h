#pragma once

/// What the program calls itself: its SimConnect client name, its entry in EXE.xml and the base name of its log.
constexpr const char* programName = "VantrelBridgeHID";
