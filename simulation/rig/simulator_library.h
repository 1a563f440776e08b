#pragma once

#include "platform/platform.h"
#include "simulation/simulator/virtual_simulator.h"
#include "wire/simconnect_open.h"

/// The built-in client library, except that it opens every session at this simulator, which must outlive its use.
SimConnectLibrary simulatorLibrary(const VirtualSimulator& simulator, SimConnectOpenLimits limits = {});
