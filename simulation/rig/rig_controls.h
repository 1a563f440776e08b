#pragma once

#include "simulation/rig/bridge_rig.h"
#include "simulation/simulator/simulator_controls.h"

/// Carries out a simulator's control on a rig. A control that starts or ends the simulator, or makes it refuse
/// connections, also changes or uses the list of processes that the bridge sees.
void applyControl(BridgeRig& rig, const SimulatorRequest& request);
