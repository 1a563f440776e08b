#pragma once

/// The program's own folder in the folder of per-machine data.
constexpr const char* dataFolderName = "VantrelBridge";
