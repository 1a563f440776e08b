#pragma once

#include "platform/platform.h"
#include "simulation/rig/simulator_library.h"
#include "simulation/simulator/virtual_simulator.h"
#include "tests/unit/simulation/simulator_client.h"

#include <atomic>

/// This system, but with one virtual simulator, whose process runs as long as `processRuns` says so. Both must outlive
/// the users of the record.
inline Platform simulatorPlatform(const VirtualSimulator& simulator, const std::atomic<bool>& processRuns) {
    Platform platform = systemPlatform();
    platform.simConnect = simulatorLibrary(simulator, {SimulatorClient::longWait});
    platform.host.findProcess = [&processRuns](const auto& visit) {
        return processRuns && visit("FlightSimulator.exe");
    };
    return platform;
}
