#pragma once

// The named pipes by which local clients reach the simulator. Systems without them have this header, too; there nobody
// can be connected to, or listened for.

#include "wire/transfer.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

/// Owns one end of a pipe, or none. Not synchronised: one thread at a time, of which each may end whenever it likes.
class Pipe {
public:
    Pipe();
    ~Pipe();
    Pipe(Pipe&& other) noexcept;
    Pipe& operator=(Pipe&& other) noexcept;
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    bool valid() const { return native != nullptr; }

    /// Writes bytes, all of them or a bounded piece. WouldBlock: the write has begun, and what it has come to is told
    /// by a later call, to which the same bytes must be given first. Without a pipe both transfers fail.
    Transfer send(std::span<const std::uint8_t> bytes);
    Transfer receive(std::span<std::uint8_t> bytes);
    /// Waits until a transfer that has begun ends, or the limit has passed. Returns at once when no read has begun.
    void awaitData(std::chrono::milliseconds limit);
    /// False: one direction of a pipe can't be ended alone.
    static bool endSending() { return false; }
    /// The peer can still receive what was sent, but for a send that would block.
    void close();
    /// A process's death does no more than this.
    void reset() { close(); }

private:
    friend class PipeListener;
    friend Pipe connectPipe(const std::string& host, const std::string& name, std::chrono::milliseconds limit);

    struct Native;
    explicit Pipe(std::unique_ptr<Native> opened);

    std::unique_ptr<Native> native;
};

/// Listens on a local pipe for any number of clients. Not synchronised.
class PipeListener {
public:
    PipeListener() = default;
    /// `pipeName` is without "\\.\pipe\". A receive buffer of 0 is 64 KiB.
    PipeListener(std::string pipeName, int receiveBufferBytes);

    bool valid() const { return waiting.valid(); }
    /// False with the reason in `error`, also when somebody else listens there. Once that has succeeded, it can be
    /// closed and listen again while clients of the former time are still connected.
    bool listen(std::string& error);
    /// The next client, or none. It then listens for a further one; when it can't, it is closed.
    Pipe accept();
    void close() { waiting.close(); }

private:
    std::unique_ptr<Pipe::Native> makeInstance(std::string& error);

    std::string name;
    int receiveBuffer = 0;
    bool owned = false;
    /// The instance that the next client gets.
    Pipe waiting;
};

/// Whether this system has such pipes.
bool havePipes();

/// Connects to the pipe \\host\pipe\name; "." is this machine. Waits up to the limit for a pipe all of whose instances
/// are taken. Another machine is waited for as long as the system does. No pipe: nobody listens there.
Pipe connectPipe(const std::string& host, const std::string& name, std::chrono::milliseconds limit);
