#pragma once

#include <string>
#include <string_view>

/// What is wrong with a command in the simulator's RPN language; empty if nothing is.
///
/// The simulator silently skips an unknown word and takes a missing value as 0. So a command passes only if this check
/// knows every event, variable and word in it, each event gets the value that it takes in its unit, and no value is
/// left over. Knows the words that the sample set needs, not the whole language.
std::string faultInCommand(std::string_view command);
