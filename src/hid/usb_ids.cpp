#include "hid/usb_ids.h"

#include "hid/hex_text.h"

#include <array>
#include <cstdio>

std::optional<std::uint16_t> parseUsbId(const std::string& text) {
    constexpr unsigned limit = 0x10000;
    unsigned value = 0;
    if (text.empty() || std::sscanf(text.c_str(), "%x", &value) != 1 || value >= limit) {
        return std::nullopt;
    }
    return static_cast<std::uint16_t>(value);
}

std::optional<UsbIds> parseUsbIds(const std::string& vendorId, const std::string& productId) {
    const std::optional<std::uint16_t> vendor = parseUsbId(vendorId);
    const std::optional<std::uint16_t> product = parseUsbId(productId);
    return vendor && product ? std::optional(UsbIds{*vendor, *product}) : std::nullopt;
}

std::string usbIdText(std::uint16_t id) {
    return hexText(std::array{static_cast<std::uint8_t>(id >> 8U), static_cast<std::uint8_t>(id)});
}

std::string usbIdsText(const UsbIds& ids) {
    return usbIdText(ids.vendorId) + ':' + usbIdText(ids.productId);
}
