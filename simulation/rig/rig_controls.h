#pragma once

#include "simulation/rig/bridge_rig.h"
#include "simulation/simulator/simulator_controls.h"

/// Carries out a simulator's control on a rig. A control that starts or ends the simulator, or lets it refuse
/// connections, also changes the list of processes that the bridge sees, or depends on it.
void applyControl(BridgeRig& rig, const SimulatorRequest& request);
