#pragma once

// The named pipes by which local clients reach the simulator. Systems without them have this header, too; connecting
// then always fails.

#include "wire/transfer.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

/// The system's side of an open pipe. Each system's sources define it.
class NativePipe;

/// Owns one end of a pipe, or none. Not synchronised: one thread at a time. A thread may end while a transfer that it
/// began is under way.
class Pipe {
public:
    Pipe();
    explicit Pipe(std::unique_ptr<NativePipe> native);
    ~Pipe();
    Pipe(Pipe&& other) noexcept;
    Pipe& operator=(Pipe&& other) noexcept;
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    bool valid() const { return native != nullptr; }

    /// Sends all of the bytes or a bounded piece of them. WouldBlock: the write has begun. A later call reports its
    /// outcome and must start with the same bytes. Without a pipe both transfers fail.
    Transfer send(std::span<const std::uint8_t> bytes);
    Transfer receive(std::span<std::uint8_t> bytes);
    /// Waits until a transfer under way ends, or the limit has passed. Returns at once when no read is under way.
    void awaitData(std::chrono::milliseconds limit);
    /// False: one direction of a pipe can't end alone.
    static bool endSending() { return false; }
    /// The peer can still receive what was sent, except for a send that returned WouldBlock.
    void close();

private:
    std::unique_ptr<NativePipe> native;
};

/// Whether this system has such pipes.
bool havePipes();

/// Connects to the pipe \\host\pipe\name; "." is this machine. Waits up to the limit for a pipe whose instances are all
/// taken. For a pipe of another machine the system alone decides how long this takes. Returns no pipe when nothing
/// listens there.
Pipe connectPipe(const std::string& host, const std::string& name, std::chrono::milliseconds limit);
