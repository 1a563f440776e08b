#include "simulation/simulator/loopback_address.h"

sockaddr_in loopbackAddress(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

bool bindToLoopback(NativeSocket::Handle socket, std::uint16_t port) {
    const sockaddr_in address = loopbackAddress(port);
    return bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

std::uint16_t boundPort(NativeSocket::Handle socket) {
    sockaddr_in address{};
    socklen_t size = sizeof(address);
    if (getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return 0;
    }
    return ntohs(address.sin_port);
}
