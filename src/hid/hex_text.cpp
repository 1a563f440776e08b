#include "hid/hex_text.h"

#include <charconv>

std::string hexText(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const auto byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

std::optional<std::vector<std::uint8_t>> bytesFromHex(std::string_view digits) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        std::uint8_t byte = 0;
        const std::string_view pair = digits.substr(i, 2);
        const auto [end, code] = std::from_chars(pair.data(), pair.data() + pair.size(), byte, 16);
        if (code != std::errc() || pair.size() != 2 || end != pair.data() + 2) {
            return std::nullopt;
        }
        bytes.push_back(byte);
    }
    return bytes;
}
