#pragma once

#include "companion/demo/play_outcome.h"

#include <ostream>
#include <string>

struct ReplayOptions {
    std::string log;
    /// Empty: the sample set that is built in.
    std::string configPath;
    /// Without the pauses that let a person follow.
    bool fast = false;
};

/// Sends the board reports of a trace log again and prints the result. Failed if not every report was played;
/// NotPlayed, with the reason in `error`, if a file can't be used or the log has no report.
PlayOutcome runReplay(const ReplayOptions& options, std::ostream& screen, std::string& error);
