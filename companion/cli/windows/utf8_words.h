#pragma once

#include <string>
#include <string_view>

/// The text in UTF-8. Each word that isn't is in the system's code page, as paths are.
std::string utf8Words(std::string_view text);
