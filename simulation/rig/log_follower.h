#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// One line of the bridge's log, without its time.
struct LogLine {
    /// "INFO", "WARN", "ERROR" or "DEBUG".
    std::string level;
    std::string message;
};

/// Reads a log file as it grows. The file needn't exist yet. Misses lines that a rotation removes before they are read.
class LogFollower {
public:
    explicit LogFollower(std::string path);

    /// The lines that were completed since the last call.
    std::vector<LogLine> newLines();

private:
    std::string path;
    std::uint64_t offset = 0;
    std::string unfinished;
};
