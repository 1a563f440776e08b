#include "simulation/rig/rig_controls.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

/// A control for which a rig has an operation of its own.
struct RigControl {
    std::string_view word;
    void (*apply)(BridgeRig& rig, std::string_view argument);
};

constexpr std::array rigControls{
    RigControl{"start", [](BridgeRig& rig, std::string_view) { rig.startSimulator(); }},
    RigControl{"quit", [](BridgeRig& rig, std::string_view) { rig.quitSimulator(); }},
    RigControl{"die", [](BridgeRig& rig, std::string_view) { rig.crashSimulator(); }},
    RigControl{"vanish", [](BridgeRig& rig, std::string_view) { rig.hideProcess(); }},
    RigControl{"refuse", [](BridgeRig& rig, std::string_view argument) { rig.refuseSessions(argument == "on"); }},
};

} // namespace

void applyControl(BridgeRig& rig, const SimulatorRequest& request) {
    const auto* const own = std::ranges::find(rigControls, request.control->word, &RigControl::word);
    if (own == rigControls.end()) {
        request.action(rig.simulator());
    } else {
        own->apply(rig, request.argument);
    }
}
