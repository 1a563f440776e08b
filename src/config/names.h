#pragma once

#include <string>
#include <string_view>

/// Removes all white space and upper-cases ASCII letters. Every name is normalised where it is read and where it is
/// looked up, so files may write names in any case and spacing.
std::string normalizeName(std::string_view text);

/// All white space removed, then a leading 0x or 0X dropped, then upper-cased.
std::string normalizeBoardId(std::string_view text);
