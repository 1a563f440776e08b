#pragma once

// TCP sockets that never block, and where the program and its user's home are. Besides pipe.h this is all that the
// SimConnect client asks of the system; nothing else in this folder knows which system it runs on.

#include "wire/transfer.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

/// Owns one non-blocking socket, or none. Not synchronised: one thread at a time.
class Socket {
public:
    Socket() = default;
    /// Takes over an open socket.
    explicit Socket(std::intptr_t owned) : native(owned) {}
    ~Socket() { close(); }
    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    bool valid() const { return native != none; }
    std::intptr_t number() const { return native; }

    /// Hands over as many bytes as the system takes. Without a socket both transfers fail.
    Transfer send(std::span<const std::uint8_t> bytes) const;
    Transfer receive(std::span<std::uint8_t> bytes) const;
    /// Waits until a receive would find something, or the limit has passed.
    void awaitData(std::chrono::milliseconds limit) const;
    /// Tells the peer that nothing more will come; receiving goes on. True: a socket can.
    bool endSending() const;
    void close();
    /// Closes with a reset, as the death of a process with unread data does.
    void reset();
    /// The system's own buffers, in bytes.
    void setSendBuffer(int bytes) const;

    /// The port that a listening socket is bound to; 0 when that can't be told.
    std::uint16_t localPort() const;
    /// The next waiting connection of a listening socket, or none.
    Socket accept() const;

private:
    static constexpr std::intptr_t none = -1;

    std::intptr_t native = none;
};

enum class AddressFamily { Any, Ipv4, Ipv6 };

/// Connects to a host, told as a literal address or a name, at each of its addresses in turn until one answers. Gives
/// up after the limit, which doesn't count the look-up of a name. No socket: nobody listens there.
Socket connectSocket(const std::string& host, std::uint16_t port, AddressFamily family,
                     std::chrono::milliseconds limit);

/// Listens on 127.0.0.1, port 0 for any. A receive buffer of 0 is the system's own. No socket: `error` has the reason.
Socket listenOnLoopback(std::uint16_t port, int receiveBuffer, std::string& error);

/// A socket that receives what it sends: one byte sent from any thread ends another's waitForSockets.
Socket makeWakeSocket();

struct SocketInterest {
    std::intptr_t socket = -1;
    bool read = false;
    bool write = false;
};

/// Waits until a read or a write on one of the sockets would find something, be it an error, or the limit has passed.
/// Another thread may close one of them meanwhile.
void waitForSockets(std::span<const SocketInterest> sockets, std::chrono::milliseconds limit);

/// The folder of the running executable, with no separator at its end; empty when it can't be told.
std::string executableFolder();
/// The user's home folder; empty when it can't be told.
std::string homeFolder();
