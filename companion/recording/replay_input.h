#pragma once

#include "companion/live/live_report.h"

#include <string>
#include <string_view>
#include <vector>

/// Reports to be played again.
struct ReplayInput {
    /// In order, with their times from the beginning; not decoded yet.
    std::vector<LiveReport> reports;
    /// Lines that can't be read, each as "PATH:LINE: why".
    std::vector<std::string> problems;
};

/// Reads a record, or any scenario, or a log that the bridge has written with --hid-trace. Of a scenario it takes what
/// the boards send, and the waits. False with "PATH:LINE:COLUMN: what is wrong" in `error`, also when there is no
/// report.
bool readReplay(const std::string& path, std::string_view text, ReplayInput& input, std::string& error);
