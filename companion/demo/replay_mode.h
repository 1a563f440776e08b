#pragma once

#include <ostream>
#include <string>

struct ReplayOptions {
    std::string log;
    /// Empty: the sample set that is built in.
    std::string configPath;
    /// Without the pauses that let a person follow.
    bool fast = false;
};

/// Sends the reports of a trace log's boards again and prints the result. True when every report was played.
bool runReplay(const ReplayOptions& options, std::ostream& screen);
