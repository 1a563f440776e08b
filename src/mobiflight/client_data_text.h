#pragma once

#include <cstdint>
#include <optional>
#include <string>

// The contents of a client data block as text. `data` may be null, which is an empty block.

/// The block's bytes up to the first zero, if there is one.
std::string blockText(const std::uint8_t* data, std::uint32_t size);

/// The value that the module writes to the LVars area: the block's text or, when that is empty, the little-endian
/// single that the block begins with, as "%f" prints it. None when the block is too short or the number isn't finite.
///
/// The module writes numbers only, but their bytes can look like a text: 0.7 begins with "333?". With `numbersOnly` the
/// block is always a number; otherwise such a value arrives as a meaningless text.
std::optional<std::string> lvarText(const std::uint8_t* data, std::uint32_t size, bool numbersOnly);
