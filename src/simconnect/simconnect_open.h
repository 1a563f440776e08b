#pragma once

#include "simconnect/simconnect_api.h"
#include "simconnect/simconnect_cfg.h"

/// SimConnect_Open at a given endpoint, with no look at SimConnect.cfg. Waits up to 5 seconds for a TCP connection and
/// 1 second for a pipe that is taken by others, but not for the simulator's answer, which a starting simulator gives
/// many seconds later. simConnectFail: nobody listens there.
///
/// No later call ever waits for the simulator, except that the loss of a pipe may take up to a second: requests that it
/// doesn't take wait in memory, and a stall of some seconds costs none of them. One that takes no byte for 30 seconds,
/// or leaves more than 16 MiB waiting, is given up; from then on calls fail with simConnectRemoteDisconnect. A call on
/// a handle that is closed, or never was one, fails with simConnectInvalidArgument.
SimConnectResult simConnectOpenAt(SimConnectHandle* handle, const char* name, const SimConnectEndpoint& endpoint);

/// The same at the first of these endpoints where somebody listens.
SimConnectResult simConnectOpenAtFirst(SimConnectHandle* handle, const char* name,
                                       const SimConnectEndpoints& endpoints);
