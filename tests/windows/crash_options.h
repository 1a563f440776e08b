#pragma once

#include <string_view>

/// As this program's first argument, with the crash line's file behind it: crash.
constexpr std::string_view trapOption = "--trap";
constexpr std::string_view abortOption = "--abort";
