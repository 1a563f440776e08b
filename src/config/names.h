#pragma once

#include <string>
#include <string_view>

/// The simulator's local variable that the boards' lights follow.
constexpr std::string_view backlightVariable = "LIGHTING_POTENTIOMETER_5";

/// All white space removed, wherever it stands, and ASCII letters upper-cased. Every name that is looked up goes
/// through it, on both sides.
std::string normalizeName(std::string_view text);

/// All white space removed, then a leading 0x or 0X dropped, then upper-cased.
std::string normalizeBoardId(std::string_view text);
