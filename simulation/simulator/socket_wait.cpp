#include "simulation/simulator/socket_wait.h"

#include "native_socket.h"

#include <vector>

void waitForSockets(std::span<const SocketInterest> sockets, std::chrono::milliseconds limit) {
    std::vector<NativeSocket::PollEntry> entries;
    entries.reserve(sockets.size());
    for (const SocketInterest& interest : sockets) {
        const int events = (interest.read ? POLLIN : 0) | (interest.write ? POLLOUT : 0);
        entries.push_back({static_cast<NativeSocket::Handle>(interest.socket), static_cast<short>(events), 0});
    }
    NativeSocket::poll(entries, static_cast<int>(limit.count()));
}
