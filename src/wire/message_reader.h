#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// Cuts one direction of a byte stream into messages, each of which begins with its own size in 32 bits. Not
/// synchronised: one thread at a time.
class MessageReader {
public:
    /// No message is shorter than `smallestMessage` bytes.
    explicit MessageReader(std::size_t smallestMessage) : smallestMessage(smallestMessage) {}

    /// Returns room for the next `size` bytes. Invalidates the spans that `next` and `peek` returned.
    std::span<std::uint8_t> prepare(std::size_t size);
    /// Takes over the first `count` bytes of that room.
    void commit(std::size_t count) { filled += count; }

    /// Takes the next message, valid until `prepare`. None: it isn't complete, or the stream is broken.
    std::optional<std::span<std::uint8_t>> next();
    /// The same without taking it: the following `next` returns it again.
    std::optional<std::span<const std::uint8_t>> peek();
    /// The stream had a size that no message can have, so nothing after it can be trusted.
    bool broken() const { return isBroken; }

    /// Far above the largest real message, which is a client data area with its head.
    static constexpr std::size_t largestMessage = 1024UL * 1024UL;

private:
    std::size_t smallestMessage;
    std::vector<std::uint8_t> buffer;
    /// buffer[taken .. filled) is waiting.
    std::size_t taken = 0;
    std::size_t filled = 0;
    bool isBroken = false;
};
