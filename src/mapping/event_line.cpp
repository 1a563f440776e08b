#include "mapping/event_line.h"

#include "hid/hid_log_lines.h"

#include <string_view>

using HidProtocol::HidEventAction;

namespace {

/// The board's role in the configuration, where it differs from the event's. A map button's line never has it.
std::string_view configuredRole(const EventDecision& decision) {
    const bool differs = !decision.isMapButton && decision.device != nullptr && decision.device->role != decision.role;
    return differs ? std::string_view(decision.device->role) : std::string_view();
}

} // namespace

std::string eventLine(const QueuedHidEvent& queued, const EventDecision& decision, const EventOutcome& outcome) {
    HidEventLine line;
    line.device = queued.deviceName;
    line.index = static_cast<std::int32_t>(queued.index);
    line.event = queued.event;
    if (decision.action != HidEventAction::None) {
        line.action = HidProtocol::actionName(decision.action);
    }
    line.role = decision.role;
    line.configuredRole = configuredRole(decision);
    line.typeName = decision.typeName;
    line.controlName = decision.controlName;
    line.amount = outcome.mfAmount;
    line.fast = decision.fast;
    line.simEventSent = outcome.simEventSent;
    line.rpnQueued = outcome.rpnQueued;
    return hidEventLine(line);
}
