#pragma once

#include "simconnect/simconnect_api.h"
#include "wire/simconnect_cfg.h"

#include <chrono>

struct SimConnectOpenLimits {
    /// How long to wait for the first answer. A simulator that refuses a session does so at once, but one that is
    /// starting up may take 20 seconds to agree. So silence is a success, and a longer wait would gain nothing.
    std::chrono::milliseconds answer{250};
    /// How long to wait for a pipe whose instances are all taken. A simulator makes room for its next client at once; a
    /// pipe that stays taken for longer has all the clients it wants.
    std::chrono::milliseconds busyPipe{1000};
};

/// SimConnect_Open at a given endpoint, ignoring SimConnect.cfg. Waits up to 5 seconds for a TCP connection, or up to
/// its limit for a pipe that is busy, and then for the simulator's first answer: an exception or the connection's end
/// within the limit is a failure, silence is not. The first dispatch delivers all that arrived meanwhile, the answer
/// included. On VERSION_MISMATCH it connects again with the next protocol version.
///
/// When VERSION_MISMATCH comes after the limit, the session stays open and mute until the simulator ends it. No other
/// version is tried then, since the requests sent meanwhile can't be taken back.
///
/// simConnectFail: nothing listens there, or the simulator refused a session.
///
/// No later call waits for the simulator, except that the loss of a pipe may take up to a second. Requests that the
/// simulator doesn't take wait in memory, so a stall of some seconds loses none of them. When it takes no byte for
/// 30 seconds, or more than 16 MiB are waiting, the session gives up, and calls fail with simConnectRemoteDisconnect. A
/// call on a closed or invalid handle fails with simConnectInvalidArgument.
SimConnectResult simConnectOpenAt(SimConnectHandle* handle, const char* name, const SimConnectEndpoint& endpoint,
                                  SimConnectOpenLimits limits = {});

/// Tries the endpoints in turn and opens the session at the first one that accepts it.
SimConnectResult simConnectOpenAtFirst(SimConnectHandle* handle, const char* name, const SimConnectEndpoints& endpoints,
                                       SimConnectOpenLimits limits = {});
