#pragma once

#include "logging/log_line.h"

#include <cstdint>
#include <string>
#include <vector>

/// Reads a log file as it grows. The file needn't exist yet. Misses lines that a rotation removes before they are read.
class LogFollower {
public:
    explicit LogFollower(std::string path);

    /// The lines that were completed since the last call. One of another form, such as the second of a message, has the
    /// level INFO and no time.
    std::vector<LogLine> newLines();

private:
    std::string path;
    std::uint64_t offset = 0;
    std::string unfinished;
};
