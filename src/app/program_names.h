#pragma once

/// What the program calls itself: its SimConnect client name, its entry in EXE.xml and the base name of its log.
constexpr const char* programName = "VantrelBridgeHID";

/// The file beside the log that gets a line about a crash.
constexpr const char* crashFileName = "VantrelBridgeHID.crash.log";
