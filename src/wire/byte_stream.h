#pragma once

#include "wire/pipe.h"
#include "wire/socket.h"
#include "wire/transfer.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <utility>
#include <variant>

/// One end of a connection, which never blocks: a socket, a pipe, or none. Not synchronised: one thread at a time.
class ByteStream {
public:
    ByteStream() = default;
    ByteStream(Socket socket) : end(std::move(socket)) {}
    ByteStream(Pipe pipe) : end(std::move(pipe)) {}

    bool valid() const {
        return std::visit([](const auto& kind) { return kind.valid(); }, end);
    }
    /// Sends as many bytes as the system takes. WouldBlock may mean that the send has begun: the next send must start
    /// with the same bytes.
    Transfer send(std::span<const std::uint8_t> bytes) {
        return std::visit([&](auto& kind) { return kind.send(bytes); }, end);
    }
    Transfer receive(std::span<std::uint8_t> bytes) {
        return std::visit([&](auto& kind) { return kind.receive(bytes); }, end);
    }
    /// Waits until a receive would find something, the end included, or the limit has passed. May return earlier. Call
    /// it only after a receive that returned WouldBlock.
    void awaitData(std::chrono::milliseconds limit) {
        std::visit([&](auto& kind) { kind.awaitData(limit); }, end);
    }
    /// Ends this direction of the connection; receiving continues. False: it can't end alone. `close` ends both, and
    /// the peer still receives what was sent before.
    bool endSending() {
        return std::visit([](auto& kind) { return kind.endSending(); }, end);
    }
    void close() {
        std::visit([](auto& kind) { kind.close(); }, end);
    }
    /// Whether the peer may see where each send begins and ends.
    bool keepsSendsApart() const { return std::holds_alternative<Pipe>(end); }
    /// Null when this isn't a socket.
    const Socket* socket() const { return std::get_if<Socket>(&end); }

private:
    std::variant<Socket, Pipe> end;
};
