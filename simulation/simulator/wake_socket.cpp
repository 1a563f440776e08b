#include "simulation/simulator/wake_socket.h"

#include "simulation/simulator/loopback_address.h"

#include <array>

namespace {

bool connectToItself(NativeSocket::Handle socket) {
    const sockaddr_in own = loopbackAddress(boundPort(socket));
    return connect(socket, reinterpret_cast<const sockaddr*>(&own), sizeof(own)) == 0;
}

} // namespace

WakeSocket::WakeSocket() {
    const NativeSocket::Handle handle = NativeSocket::open(AF_INET, SOCK_DGRAM);
    socket = Socket(static_cast<std::intptr_t>(handle));
    if (!bindToLoopback(handle, 0) || !connectToItself(handle)) {
        socket.close();
    }
}

void WakeSocket::wake() const {
    const std::array<std::uint8_t, 1> byte{};
    socket.send(byte);
}

void WakeSocket::drain() const {
    std::array<std::uint8_t, 64> wakes{};
    while (socket.receive(wakes).status == TransferStatus::Done) {
    }
}
