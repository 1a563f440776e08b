#pragma once

#include <cstdint>
#include <string>

/// The message about settings whose ids can't be read.
constexpr const char* invalidUsbIds = "Invalid VID/PID";

/// Reads a USB vendor or product id of 16 bits from hexadecimal text. As lenient as sscanf: a leading 0x and stray
/// characters after the digits are accepted, so that files that users already have keep working. False leaves `id`
/// unchanged.
bool parseUsbId(const std::string& text, std::uint32_t& id);
