#pragma once

#include "wire/transfer.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

/// Owns one non-blocking, connected TCP socket, or none. Not synchronised: one thread at a time.
class Socket {
public:
    Socket() = default;
    /// Takes over an open, non-blocking socket; -1 is none.
    explicit Socket(std::intptr_t native) : native(native) {}
    ~Socket() { close(); }
    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    bool valid() const { return native != none; }
    /// The system's handle, which stays this object's; -1 is none.
    std::intptr_t handle() const { return native; }

    /// Sends as many bytes as the system takes. Without a socket both transfers fail.
    Transfer send(std::span<const std::uint8_t> bytes) const;
    Transfer receive(std::span<std::uint8_t> bytes) const;
    /// Waits until a receive would find something, or the limit has passed.
    void awaitData(std::chrono::milliseconds limit) const;
    /// Ends this direction of the connection; receiving continues. True: a socket can do that.
    bool endSending() const;
    void close();

private:
    static constexpr std::intptr_t none = -1;

    std::intptr_t native = none;
};

enum class AddressFamily { Any, Ipv4, Ipv6 };

/// Connects to a literal address or a host name, trying each of its addresses in turn. Gives up after the limit, which
/// doesn't count the look-up of a name. Returns no socket when nothing listens there.
Socket connectSocket(const std::string& host, std::uint16_t port, AddressFamily family,
                     std::chrono::milliseconds limit);
