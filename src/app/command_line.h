#pragma once

#include <string>

/// The options, as given. An unknown argument is ignored, and so is `--config` as the last argument; of several
/// `--config` the last one applies.
struct CommandLine {
    bool console = false;
    bool hidTrace = false;
    bool listExeXml = false;
    bool registerProgram = false;
    bool unregisterProgram = false;
    /// Empty when none was given.
    std::string configPath;
};

/// Reads the arguments from the second on.
CommandLine parseCommandLine(int argc, const char* const* argv);
