#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// Bytes that wait to be sent. Reuses its memory, so a steady flow allocates nothing. Not synchronised.
class OutboundBuffer {
public:
    /// Append new bytes here.
    std::vector<std::uint8_t>& tail() { return bytes; }
    std::span<const std::uint8_t> pending() const { return std::span(bytes).subspan(sent); }
    void consume(std::size_t count);

private:
    std::vector<std::uint8_t> bytes;
    std::size_t sent = 0;
};
