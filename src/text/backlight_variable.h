#pragma once

#include <string_view>

/// The simulator's local variable that the boards' lights follow.
constexpr std::string_view backlightVariable = "LIGHTING_POTENTIOMETER_5";
