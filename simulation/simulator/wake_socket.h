#pragma once

#include "wire/socket.h"

/// Lets any thread end another thread's `waitForSockets`: a datagram socket that receives what it sends itself.
class WakeSocket {
public:
    WakeSocket();

    /// False: the system refused the socket.
    bool valid() const { return socket.valid(); }
    /// Any thread may call it.
    void wake() const;
    /// Forgets the wakes so far.
    void drain() const;
    /// To wait for.
    std::intptr_t handle() const { return socket.handle(); }

private:
    Socket socket;
};
