#pragma once

#include "native_socket.h"

#include <cstdint>

// The sockets of this machine's own address, 127.0.0.1.

sockaddr_in loopbackAddress(std::uint16_t port);

/// Binds to a port, 0 for any free one. False: the port is taken.
bool bindToLoopback(NativeSocket::Handle socket, std::uint16_t port);

/// The port that a socket is bound to; 0 when it isn't bound.
std::uint16_t boundPort(NativeSocket::Handle socket);
