#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// Cuts a byte stream into messages, each of which begins with its own size in 32 bits. Serves one side of a
/// connection; one thread at a time.
class MessageReader {
public:
    /// A message is at least `smallestMessage` bytes long.
    explicit MessageReader(std::size_t smallestMessage) : smallest(smallestMessage) {}

    /// Room for the next `size` bytes. Ends the life of the spans that `next` gave.
    std::span<std::uint8_t> prepare(std::size_t size);
    /// Says how many of the bytes in that room are filled.
    void commit(std::size_t count) { filled += count; }

    /// The next whole message, valid until `prepare`; none when it hasn't come entirely, or when the stream is broken.
    std::optional<std::span<std::uint8_t>> next();
    /// The same message without taking it: the following `next` gives it again.
    std::optional<std::span<const std::uint8_t>> peek();
    /// A size that no message can have was found: nothing behind it can be trusted.
    bool broken() const { return isBroken; }

    /// Far above the largest message, which is a client data area with its head.
    static constexpr std::size_t largestMessage = 1024UL * 1024UL;

private:
    std::size_t smallest;
    std::vector<std::uint8_t> buffer;
    /// buffer[taken .. filled) is waiting.
    std::size_t taken = 0;
    std::size_t filled = 0;
    bool isBroken = false;
};
