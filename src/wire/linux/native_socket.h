#pragma once

// This system's sockets under the names that the code above them uses. Each system's folder has this header with the
// same names in it, and the build puts one of these folders on the include path.

#include "wire/deadline.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <span>

namespace NativeSocket {

using Handle = int;
using PollEntry = pollfd;

/// A send to a peer that has closed must fail, not end the program with a signal.
constexpr int sendFlags = MSG_NOSIGNAL;
constexpr int endOfSending = SHUT_WR;
/// Without this option a listener can't return to its port for a minute after its connections ended.
constexpr bool returnsToPortByOption = true;

inline void start() {}

inline int lastError() {
    return errno;
}

inline bool isWouldBlock(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINPROGRESS;
}

inline bool isInterrupted(int error) {
    return error == EINTR;
}

inline std::size_t transferSize(std::size_t size) {
    return size;
}

inline bool makeNonBlocking(Handle socket) {
    return fcntl(socket, F_SETFL, O_NONBLOCK) == 0 && fcntl(socket, F_SETFD, FD_CLOEXEC) == 0;
}

/// A non-blocking socket; -1 when the system gives none.
inline Handle open(int family, int type) {
    return socket(family, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
}

inline void close(Handle socket) {
    ::close(socket);
}

inline bool setOption(Handle socket, int level, int name, int value) {
    return setsockopt(socket, level, name, &value, sizeof(value)) == 0;
}

/// Messages are small and must leave at once.
inline void disableDelay(Handle socket) {
    setOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
}

inline int poll(std::span<PollEntry> entries, int limitMs) {
    return ::poll(entries.data(), entries.size(), limitMs);
}

/// Waits for the end of a connection attempt. False: it failed, or the deadline has passed.
inline bool finishConnect(Handle socket, std::chrono::steady_clock::time_point deadline) {
    std::array<PollEntry, 1> entry{{{socket, POLLOUT, 0}}};
    int count = 0;
    do {
        count = poll(entry, millisecondsLeft(deadline));
    } while (count < 0 && isInterrupted(lastError()));
    int error = 0;
    socklen_t size = sizeof(error);
    return count > 0 && getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

} // namespace NativeSocket
