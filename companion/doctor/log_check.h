#pragma once

#include "companion/doctor/check_result.h"
#include "companion/doctor/machine.h"
#include "logging/log_line.h"

#include <string>
#include <string_view>
#include <vector>

/// The errors and warnings that the bridge logged in its last run, without those that later lines show to be over.
struct LogFacts {
    /// The log with the latest line; empty when there is none.
    std::string path;
    std::vector<LogLine> troubles;
};

/// The bridge's log files with the newest of each first: in the data folder, and with --console beside the bridge.
std::vector<std::string> logFolders(const Host& host);

/// The log file in a folder.
std::string logPath(const std::string& folder);

/// Lines that aren't the log's own are left out.
std::vector<LogLine> parseLog(std::string_view text);

/// As in LogFacts.
std::vector<LogLine> lastTroubles(const std::vector<LogLine>& lines);

LogFacts readLogFacts(const Host& host);

void judgeLog(const LogFacts& facts, CheckResults& results);
