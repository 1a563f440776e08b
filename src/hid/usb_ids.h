#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// The message about settings whose ids can't be read.
constexpr const char* invalidUsbIds = "Invalid VID/PID";

/// A device's vendor and product, by the numbers that its maker gave them.
struct UsbIds {
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;

    bool operator==(const UsbIds&) const = default;
};

/// Reads an id from hexadecimal text. As lenient as sscanf: a leading 0x and stray characters after the digits are
/// accepted, so that files that users already have keep working.
std::optional<std::uint16_t> parseUsbId(const std::string& text);

/// None unless both can be read.
std::optional<UsbIds> parseUsbIds(const std::string& vendorId, const std::string& productId);

/// Four upper-case hexadecimal digits.
std::string usbIdText(std::uint16_t id);

/// "16C0:27DB".
std::string usbIdsText(const UsbIds& ids);
