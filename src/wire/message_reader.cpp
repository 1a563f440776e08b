#include "wire/message_reader.h"

#include "wire/requests.h"

#include <algorithm>

std::span<std::uint8_t> MessageReader::prepare(std::size_t size) {
    if (taken > 0) {
        const auto begin = buffer.begin();
        std::copy(begin + static_cast<std::ptrdiff_t>(taken), begin + static_cast<std::ptrdiff_t>(filled), begin);
        filled -= taken;
        taken = 0;
    }
    if (buffer.size() < filled + size) {
        buffer.resize(filled + size);
    }
    return std::span(buffer).subspan(filled, size);
}

std::optional<std::span<std::uint8_t>> MessageReader::next() {
    const std::span<std::uint8_t> waiting = std::span(buffer).subspan(taken, filled - taken);
    if (isBroken || waiting.size() < sizeof(std::uint32_t)) {
        return std::nullopt;
    }
    const std::size_t size = SimConnectWire::numberAt(waiting, 0);
    if (size < smallestMessage || size > largestMessage) {
        isBroken = true;
        return std::nullopt;
    }
    if (waiting.size() < size) {
        return std::nullopt;
    }
    taken += size;
    return waiting.first(size);
}

std::optional<std::span<const std::uint8_t>> MessageReader::peek() {
    const auto message = next();
    taken -= message ? message->size() : 0;
    return message;
}
