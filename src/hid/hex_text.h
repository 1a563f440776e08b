#pragma once

#include <cstdint>
#include <span>
#include <string>

/// Two upper-case hexadecimal digits for each byte, with no separators.
std::string hexText(std::span<const std::uint8_t> bytes);
