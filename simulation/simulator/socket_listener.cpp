#include "simulation/simulator/socket_listener.h"

#include "simulation/simulator/loopback_address.h"

#include <system_error>
#include <utility>

namespace {

using NativeSocket::setOption;

void prepare(NativeSocket::Handle handle, int receiveBufferBytes) {
    if (NativeSocket::returnsToPortByOption) {
        setOption(handle, SOL_SOCKET, SO_REUSEADDR, 1);
    }
    if (receiveBufferBytes > 0) {
        // Accepted sockets inherit it. Setting it on them would be too late: the peer already knows the window.
        setOption(handle, SOL_SOCKET, SO_RCVBUF, receiveBufferBytes);
    }
}

} // namespace

bool SocketListener::listen(std::string& error) {
    const NativeSocket::Handle handle = NativeSocket::open(AF_INET, SOCK_STREAM);
    Socket opened(static_cast<std::intptr_t>(handle));
    if (opened.valid()) {
        prepare(handle, receiveBufferBytes);
        if (bindToLoopback(handle, wantedPort) && ::listen(handle, SOMAXCONN) == 0) {
            wantedPort = boundPort(handle);
            socket = std::move(opened);
            return true;
        }
    }
    error = "Failed to listen on port " + std::to_string(wantedPort) + ": " +
            std::system_category().message(NativeSocket::lastError());
    return false;
}

Socket SocketListener::accept() const {
    const NativeSocket::Handle accepted = ::accept(static_cast<NativeSocket::Handle>(handle()), nullptr, nullptr);
    Socket client(static_cast<std::intptr_t>(accepted));
    if (!client.valid() || !NativeSocket::makeNonBlocking(accepted)) {
        return {};
    }
    NativeSocket::disableDelay(accepted);
    return client;
}
