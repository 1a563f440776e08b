#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// A running process.
struct ProcessFacts {
    std::int64_t id = 0;
    /// Who started it, if that one still runs and the system knows it; else another number, which may be 0.
    std::int64_t parent = 0;
    /// Its program's, without a folder.
    std::string name;
};

/// Looks at this machine's processes, and ends one. Any thread.
struct ProcessControl {
    std::function<std::vector<ProcessFacts>()> list;
    /// Returns the system's reason for a failure, else an empty text. The process may take a while.
    std::function<std::string(std::int64_t id)> end;
    /// What `end` does, for its user: a sentence about "it".
    std::string howItEnds;
};

ProcessControl systemProcesses();
