#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// Bytes that wait for a socket. Keeps its memory, so that a steady flow allocates nothing. One thread at a time.
class OutboundBuffer {
public:
    /// New bytes are appended here.
    std::vector<std::uint8_t>& tail() { return bytes; }
    std::span<const std::uint8_t> pending() const { return std::span(bytes).subspan(sent); }
    void consume(std::size_t count);

private:
    std::vector<std::uint8_t> bytes;
    std::size_t sent = 0;
};
