#pragma once

#include "simulation/rig/rig_observer.h"
#include "simulation/scenarios/scenario_file.h"

#include <string>
#include <vector>

/// Recognises the start of a session in the output of a scenario's rig: the handshake, the first values of battery and
/// light, and the first reports to the boards.
class SessionStart {
public:
    /// The rig must outlive this object.
    SessionStart(const Scenario& scenario, const BridgeRig& rig);

    /// Takes everything that comes, in order.
    void note(const Observation& observation);
    /// Whether a session has started since the last `forget`: with the module's part of the handshake, where the
    /// scenario has one and the caller wants it, or without it.
    bool isComplete(bool withModule) const;
    void forget();

private:
    const BridgeRig& rig;
    // Of the scenario's configuration.
    const bool moduleUsed;
    const bool stateLogged;
    /// What the cockpit light follows.
    const std::string lightCode;
    /// What the simulator received.
    std::vector<std::string> received;
    // In the log.
    bool batteryKnown = false;
    bool lightKnown = false;

    std::string_view lastLine(bool withModule) const;
    bool handshakeSeen(std::string_view last) const;
    bool stateSeen(std::string_view last) const;
    bool boardsServed() const;
};
