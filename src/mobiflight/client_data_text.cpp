#include "mobiflight/client_data_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdio>

namespace {

std::optional<std::string> numberText(const std::uint8_t* data, std::uint32_t size) {
    if (data == nullptr || size < sizeof(float)) {
        return std::nullopt;
    }
    const std::uint32_t bits =
        data[0] | std::uint32_t{data[1]} << 8 | std::uint32_t{data[2]} << 16 | std::uint32_t{data[3]} << 24;
    const auto value = std::bit_cast<float>(bits);
    if (!std::isfinite(value)) {
        return std::nullopt;
    }
    // The largest single has 39 digits before the point.
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%f", static_cast<double>(value));
    return text.data();
}

} // namespace

std::string blockText(const std::uint8_t* data, std::uint32_t size) {
    if (data == nullptr) {
        return {};
    }
    return {data, std::find(data, data + size, std::uint8_t{0})};
}

std::optional<std::string> lvarText(const std::uint8_t* data, std::uint32_t size, bool numbersOnly) {
    if (!numbersOnly) {
        std::string text = blockText(data, size);
        if (!text.empty()) {
            return text;
        }
    }
    return numberText(data, size);
}
