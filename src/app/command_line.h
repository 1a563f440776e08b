#pragma once

#include <string>

/// The options, as given. An unknown argument is ignored, and so is `--config` with nothing behind it; of several
/// `--config` the last one counts.
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
