#include "companion/live/decoded_event.h"

#include "mapping/event_decision.h"

#include <algorithm>

using HidProtocol::HidEvent;
using HidProtocol::HidEventAction;

namespace {

/// A mode byte that leaves the role to the configuration.
constexpr std::uint8_t configuredMode = 0xFF;

EventDecision decide(const BridgeConfiguration& configuration, const HidEvent& event, const std::string& board,
                     int index) {
    return decideEvent(configuration.settings, configuration.buttons, configuration.eventMap, event, board, index);
}

/// The roles in which the same event would have a command: those that a board can choose itself, and those of the
/// configured boards.
std::vector<std::string> rolesWithCommand(const BridgeConfiguration& configuration, HidEvent event) {
    std::vector<std::string> roles;
    const auto tryRole = [&](std::uint8_t mode, const std::string& board, int index) {
        event.mode = mode;
        const EventDecision decision = decide(configuration, event, board, index);
        if (!decision.command.empty() && std::ranges::find(roles, decision.role) == roles.end()) {
            roles.push_back(decision.role);
        }
    };
    tryRole(0, "", -1);
    tryRole(1, "", -1);
    for (const DeviceEntry& device : configuration.settings.outputs.devices) {
        tryRole(configuredMode, device.boardId, device.index);
    }
    return roles;
}

/// The simulator's event for the press of the same control; empty for none.
std::string pressEvent(const BridgeConfiguration& configuration, HidEvent event, const std::string& board, int index) {
    event.type = HidProtocol::eventTypeButton;
    event.value = 1;
    return std::string(decide(configuration, event, board, index).simEvent);
}

BridgeAnswer answerWithoutAction(const HidEvent& event) {
    if (event.type == HidProtocol::eventTypeBoardNotice) {
        return BridgeAnswer::BoardNotice;
    }
    const bool isKnown = event.type == HidProtocol::eventTypeButton || event.type == HidProtocol::eventTypeEncoder;
    return isKnown ? BridgeAnswer::UnknownValue : BridgeAnswer::UnknownType;
}

BridgeAnswer answerOfMapButton(const EventDecision& decision) {
    if (decision.action == HidEventAction::ButtonRelease) {
        return BridgeAnswer::EndsRepeat;
    }
    return decision.action == HidEventAction::Hold ? BridgeAnswer::RepeatsCommand : BridgeAnswer::SendsCommand;
}

/// For an action without any command or simulator's event.
void explain(DecodedEvent& decoded, const BridgeConfiguration& configuration, const EventDecision& decision) {
    if (!decision.isListed) {
        decoded.answer = decoded.controlName.empty() ? BridgeAnswer::NumberWithoutName : BridgeAnswer::NotListed;
    } else if (!configuration.settings.mobiflight.enabled) {
        decoded.answer = BridgeAnswer::MobiFlightDisabled;
    } else {
        decoded.otherRoles = rolesWithCommand(configuration, decoded.event);
        decoded.answer =
            decoded.otherRoles.empty() ? BridgeAnswer::ActionWithoutCommand : BridgeAnswer::RoleWithoutCommand;
    }
}

} // namespace

DecodedEvent decodeEvent(const BridgeConfiguration& configuration, const HidEvent& event, const std::string& board,
                         int index) {
    const EventDecision decision = decide(configuration, event, board, index);
    DecodedEvent decoded;
    decoded.event = event;
    decoded.action = decision.action;
    decoded.controlName = decision.controlName;
    decoded.role = decision.role;
    decoded.command = decision.command;
    decoded.times = decision.amount;
    decoded.fast = decision.fast;
    if (decision.action == HidEventAction::None) {
        decoded.answer = answerWithoutAction(event);
    } else if (!decision.command.empty() ||
               (decision.isMapButton && decision.action == HidEventAction::ButtonRelease)) {
        decoded.answer = decision.isMapButton ? answerOfMapButton(decision) : BridgeAnswer::SendsCommand;
    } else if (!decision.simEvent.empty()) {
        decoded.answer = BridgeAnswer::FiresEvent;
        decoded.command = decision.simEvent;
    } else if (decoded.command = pressEvent(configuration, event, board, index); !decoded.command.empty()) {
        decoded.answer = BridgeAnswer::OnlyPressFires;
    } else {
        explain(decoded, configuration, decision);
    }
    return decoded;
}

bool sendsAnything(BridgeAnswer answer) {
    return answer == BridgeAnswer::SendsCommand || answer == BridgeAnswer::RepeatsCommand ||
           answer == BridgeAnswer::FiresEvent;
}
