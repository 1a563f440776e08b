#pragma once

#include "wire/socket.h"

#include <cstdint>
#include <string>

/// Listens on a port of 127.0.0.1 for any number of clients. Not synchronised.
class SocketListener {
public:
    SocketListener() = default;
    /// A port, 0 for any free one. A receive buffer of 0 is the system's own.
    SocketListener(std::uint16_t port, int receiveBufferBytes)
        : wantedPort(port), receiveBufferBytes(receiveBufferBytes) {}

    bool valid() const { return socket.valid(); }
    /// False with the reason in `error`. Later calls listen on the port that the first one got.
    bool listen(std::string& error);
    /// The next client, or none.
    Socket accept() const;
    void close() { socket.close(); }

    /// The port that the last `listen` got; before that, the requested one.
    std::uint16_t port() const { return wantedPort; }
    std::intptr_t handle() const { return socket.handle(); }

private:
    std::uint16_t wantedPort = 0;
    int receiveBufferBytes = 0;
    Socket socket;
};
