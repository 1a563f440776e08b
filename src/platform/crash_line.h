#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// What a crashed process knows about its end.
struct CrashFacts {
    /// Its name.
    std::string_view program;
    std::string_view version;
    /// What `code` is: "signal" or "exception".
    std::string_view kind;
    std::uint64_t code = 0;
    /// That of the instruction.
    std::uint64_t address = 0;
    // Where the system has loaded the program, in bytes.
    std::uint64_t programStart = 0;
    std::uint64_t programSize = 0;
};

/// Writes the line, with its end, to `buffer` and returns its length. What doesn't fit is cut off. Allocates nothing
/// and takes no lock, as a crashed process demands.
std::size_t writeCrashLine(const CrashFacts& facts, std::span<char> buffer);

/// From here on, a crash appends its line to the file at `path`, whose folder must exist by then, and the process then
/// ends as it would have without it. A thread other than the caller's that runs out of stack leaves no line. Called
/// once, on the main thread. A path beyond the system's limit gets no line.
void installCrashLine(const std::string& path, std::string_view program, std::string_view version);
