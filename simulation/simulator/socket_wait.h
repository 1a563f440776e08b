#pragma once

#include <chrono>
#include <cstdint>
#include <span>

/// What a wait looks for on a socket.
struct SocketInterest {
    /// As `Socket::handle` returns it.
    std::intptr_t socket = -1;
    bool read = false;
    bool write = false;
};

/// Waits until a read or a write on one of the sockets would find something, an error included, or the limit has
/// passed. Another thread may close one of them meanwhile.
void waitForSockets(std::span<const SocketInterest> sockets, std::chrono::milliseconds limit);
