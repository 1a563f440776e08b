#pragma once

#include <string>

/// What the program calls itself: its SimConnect client name, its entry in EXE.xml and the base name of its log.
constexpr const char* programName = "VantrelBridgeHID";

/// The file beside the log that gets a line about a crash of that program.
inline std::string crashFileName(const std::string& program) {
    return program + ".crash.log";
}
