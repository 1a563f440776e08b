#include "mapping/event_line.h"

using HidProtocol::HidEventAction;

namespace {

std::string rolePieces(const EventDecision& decision) {
    std::string pieces;
    if (!decision.role.empty()) {
        pieces += " role=" + decision.role;
    }
    // A map button's line has always been without it.
    if (!decision.isMapButton && decision.device != nullptr && !decision.device->role.empty() &&
        decision.device->role != decision.role) {
        pieces += " configuredRole=" + decision.device->role;
    }
    return pieces;
}

std::string inBrackets(std::string_view name) {
    return name.empty() ? std::string() : "(" + std::string(name) + ")";
}

std::string outcomePieces(const EventDecision& decision, const EventOutcome& outcome) {
    std::string pieces;
    if (outcome.mfAmount != 0) {
        pieces += " mfAmount=" + std::to_string(outcome.mfAmount);
    }
    pieces.append(decision.fast ? " fast=1" : "").append(outcome.simEventSent ? " simEvent=sent" : "");
    return pieces.append(outcome.rpnQueued ? " rpn=queued" : "");
}

} // namespace

std::string eventLine(const QueuedHidEvent& queued, const EventDecision& decision, const EventOutcome& outcome) {
    const HidProtocol::HidEvent& event = queued.event;
    std::string line = "HID event from " + queued.deviceName +
                       " index=" + std::to_string(static_cast<std::int32_t>(queued.index)) +
                       " type=" + std::to_string(event.type);
    if (decision.action != HidEventAction::None) {
        line.append(" action=").append(HidProtocol::actionName(decision.action));
    }
    // The type's name follows the role, not the type's number: readers of the log know the line in this order.
    line += rolePieces(decision) + inBrackets(decision.typeName);
    line += " controlId=" + std::to_string(event.controlId) + inBrackets(decision.controlName);
    line += " value=" + std::to_string(event.value) + " speed=" + std::to_string(event.speed) +
            " mode=" + std::to_string(event.mode);
    return line + outcomePieces(decision, outcome);
}
