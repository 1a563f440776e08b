#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Two upper-case hexadecimal digits for each byte, with no separators.
std::string hexText(std::span<const std::uint8_t> bytes);

/// The bytes of an even number of hexadecimal digits of either case; none when the text is anything else.
std::optional<std::vector<std::uint8_t>> bytesFromHex(std::string_view digits);
