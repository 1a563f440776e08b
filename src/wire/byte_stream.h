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
    /// Hands over as many bytes as the system takes. A send that would block may have begun: its bytes must be the
    /// first of the next.
    Transfer send(std::span<const std::uint8_t> bytes) {
        return std::visit([&](auto& kind) { return kind.send(bytes); }, end);
    }
    Transfer receive(std::span<std::uint8_t> bytes) {
        return std::visit([&](auto& kind) { return kind.receive(bytes); }, end);
    }
    /// Waits until a receive would find something, be it the end, or the limit has passed. It may return earlier. Only
    /// behind a receive that would block.
    void awaitData(std::chrono::milliseconds limit) {
        std::visit([&](auto& kind) { kind.awaitData(limit); }, end);
    }
    /// Tells the peer that nothing more will come; receiving goes on. False: only `close` can tell it, and what was
    /// sent is then still received.
    bool endSending() {
        return std::visit([](auto& kind) { return kind.endSending(); }, end);
    }
    void close() {
        std::visit([](auto& kind) { kind.close(); }, end);
    }
    /// Ends it as the death of a process does.
    void reset() {
        std::visit([](auto& kind) { kind.reset(); }, end);
    }
    /// Whether the peer may see where each send begins and ends.
    bool keepsSendsApart() const { return std::holds_alternative<Pipe>(end); }
    /// The socket to wait for; null when it is none.
    const Socket* socket() const { return std::get_if<Socket>(&end); }

private:
    std::variant<Socket, Pipe> end;
};
