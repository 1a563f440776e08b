#pragma once

#include "companion/check/finding.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// A remark about a command text.
struct CommandRemark {
    /// The byte of the command that it is about.
    std::size_t offset = 0;
    Severity severity = Severity::Warning;
    std::string code;
    std::string message;
    std::string hint;
};

/// What is wrong with a command in the simulator's RPN language, as far as its text shows. The simulator itself never
/// reports anything: it skips what it doesn't know. That an event isn't in the catalogue is a hint, since aircraft have
/// events of their own.
std::vector<CommandRemark> checkCommand(std::string_view command);
