#pragma once

// This system's sockets under the names that the code above them uses. Each system's folder has this header with the
// same names in it, and the build puts one of these folders on the include path.

#include "wire/deadline.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <limits>
#include <span>

namespace NativeSocket {

using Handle = SOCKET;
using PollEntry = WSAPOLLFD;

constexpr int sendFlags = 0;
constexpr int endOfSending = SD_SEND;
/// A listener can return to its port anyway. The option of that name would let other programs take the port, too.
constexpr bool returnsToPortByOption = false;

/// Starts Winsock before its first use. It stays until the process ends.
inline void start() {
    static const bool started = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data) == 0;
    }();
    (void)started;
}

inline int lastError() {
    return WSAGetLastError();
}

inline bool isWouldBlock(int error) {
    return error == WSAEWOULDBLOCK || error == WSAEINPROGRESS;
}

inline bool isInterrupted(int /*error*/) {
    return false;
}

/// Winsock counts a transfer's bytes in int. A longer one is made in pieces anyway.
inline int transferSize(std::size_t size) {
    constexpr std::size_t most = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(size, most));
}

inline bool makeNonBlocking(Handle socket) {
    u_long on = 1;
    return ioctlsocket(socket, FIONBIO, &on) == 0;
}

inline void close(Handle socket) {
    closesocket(socket);
}

/// A non-blocking socket; -1 when the system gives none.
inline Handle open(int family, int type) {
    start();
    const Handle opened = socket(family, type, 0);
    if (opened != INVALID_SOCKET && !makeNonBlocking(opened)) {
        close(opened);
        return INVALID_SOCKET;
    }
    return opened;
}

inline bool setOption(Handle socket, int level, int name, int value) {
    return setsockopt(socket, level, name, reinterpret_cast<const char*>(&value), sizeof(value)) == 0;
}

/// Messages are small and must leave at once.
inline void disableDelay(Handle socket) {
    setOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
}

inline int poll(std::span<PollEntry> entries, int limitMs) {
    return WSAPoll(entries.data(), static_cast<ULONG>(entries.size()), limitMs);
}

/// Waits for the end of a connection attempt. False: it failed, or the deadline has passed.
inline bool finishConnect(Handle socket, std::chrono::steady_clock::time_point deadline) {
    // On older systems WSAPoll doesn't report a refused connection; select reports it among the exceptions.
    fd_set written;
    fd_set failed;
    FD_ZERO(&written);
    FD_ZERO(&failed);
    FD_SET(socket, &written);
    FD_SET(socket, &failed);
    const int left = millisecondsLeft(deadline);
    timeval limit{left / 1000, (left % 1000) * 1000};
    select(0, nullptr, &written, &failed, &limit);
    return FD_ISSET(socket, &written) != 0;
}

} // namespace NativeSocket
