#pragma once

#include "simconnect/simconnect_api.h"
#include "wire/simconnect_cfg.h"

#include <chrono>

struct SimConnectOpenLimits {
    /// How long to wait for the first answer. A simulator that refuses a session does so at once. One that starts up
    /// may take 20 seconds to agree, so silence counts as success and the wait needn't be longer.
    std::chrono::milliseconds answer{250};
};

/// SimConnect_Open at a given endpoint, with no look at SimConnect.cfg. Waits up to 5 seconds for a TCP connection, or
/// 1 second for a pipe that is taken by others, and then for the simulator's first answer: an exception or the
/// connection's end within the limit is a failure, silence is not. What arrived meanwhile, the answer too, is handed
/// out by the first dispatch. On VERSION_MISMATCH it connects again with the next version of the protocol.
///
/// A simulator that answers VERSION_MISMATCH later than the limit leaves a session that is open and mute until the
/// simulator ends it: the requests sent meanwhile can't be taken back, so no other version is tried.
///
/// simConnectFail: nobody listens there, or no session was given.
///
/// No later call ever waits for the simulator, except that the loss of a pipe may take up to a second: requests that it
/// doesn't take wait in memory, and a stall of some seconds costs none of them. One that takes no byte for 30 seconds,
/// or leaves more than 16 MiB waiting, is given up; from then on calls fail with simConnectRemoteDisconnect. A call on
/// a handle that is closed, or never was one, fails with simConnectInvalidArgument.
SimConnectResult simConnectOpenAt(SimConnectHandle* handle, const char* name, const SimConnectEndpoint& endpoint,
                                  SimConnectOpenLimits limits = {});

/// The same at the first of these endpoints that gives a session.
SimConnectResult simConnectOpenAtFirst(SimConnectHandle* handle, const char* name, const SimConnectEndpoints& endpoints,
                                       SimConnectOpenLimits limits = {});
