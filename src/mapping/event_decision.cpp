#include "mapping/event_decision.h"

#include "config/names.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <unordered_map>

using HidProtocol::HidEvent;
using HidProtocol::HidEventAction;

namespace {

/// The lowest speed class that uses a control's fast command. The firmware decides which turns belong to a class.
constexpr std::uint8_t fastSpeed = 4;

constexpr std::array mapButtons = {"MAP_LEFT", "MAP_RIGHT", "MAP_UP", "MAP_DOWN"};

/// The command file's entry of one control for one role.
struct ControlCommands {
    const ButtonConfig& buttons;
    std::string normalizedName;
    std::string role;

    std::string lookup(std::string_view action) const { return buttons.lookup(normalizedName, action, role); }
};

std::string_view nameOf(const std::map<std::int32_t, std::string>& names, std::int32_t number) {
    const auto found = names.find(number);
    return found == names.end() ? std::string_view() : found->second;
}

/// The board's own mode overrides the role in the configuration.
std::string roleOf(const HidEvent& event, const DeviceEntry* device) {
    if (event.mode == 0) {
        return "PFD";
    }
    if (event.mode == 1) {
        return "MFD";
    }
    return device != nullptr ? device->role : std::string();
}

bool isEncoder(HidEventAction action) {
    return action == HidEventAction::EncCw || action == HidEventAction::EncCcw;
}

RpnKind rpnKind(HidEventAction action) {
    if (action == HidEventAction::Hold) {
        return RpnKind::Hold;
    }
    return isEncoder(action) ? RpnKind::Encoder : RpnKind::Normal;
}

std::uint32_t encoderAmount(const HidEvent& event) {
    const int magnitude = std::max(std::abs(static_cast<int>(event.value)), 1);
    return static_cast<std::uint32_t>(std::max<int>(magnitude, event.speed));
}

bool isMapButton(HidEventAction action, const std::string& normalizedName) {
    return action != HidEventAction::None && !isEncoder(action) &&
           std::find(mapButtons.begin(), mapButtons.end(), normalizedName) != mapButtons.end();
}

/// The simulator's own event for a control that the command file doesn't list, by the control's number; empty for none.
/// The numbers between are gaps in the boards' numbering.
std::string_view builtInEvent(std::uint16_t controlId) {
    static const std::unordered_map<std::uint16_t, std::string_view> table = {
        {5, "AP_MASTER"},   {6, "TOGGLE_FLIGHT_DIRECTOR"}, {7, "AP_HDG_HOLD"}, {8, "AP_ALT_HOLD"}, {9, "AP_NAV1_HOLD"},
        {11, "AP_BC_HOLD"}, {12, "AP_APR_HOLD"},           {13, "AP_VS_HOLD"}, {16, "AP_FLC"},
    };
    const auto row = table.find(controlId);
    return row == table.end() ? std::string_view() : row->second;
}

/// The commands of a hold and a press that may still wait in the queue when their control is released.
std::vector<std::string> releasedCommands(const ControlCommands& commands) {
    std::vector<std::string> released = {commands.lookup("HOLD"), commands.lookup("PRESS")};
    std::erase(released, std::string());
    return released;
}

std::string mapButtonCommand(HidEventAction action, const ControlCommands& commands) {
    if (action == HidEventAction::ButtonRelease) {
        return {};
    }
    std::string hold = action == HidEventAction::Hold ? commands.lookup("HOLD") : std::string();
    return hold.empty() ? commands.lookup("PRESS") : hold;
}

void chooseEncoderCommand(EventDecision& decision, const HidEvent& event, const ControlCommands& commands) {
    if (event.speed >= fastSpeed) {
        decision.command = commands.lookup(decision.action == HidEventAction::EncCw ? "CW_FAST" : "CCW_FAST");
        decision.fast = !decision.command.empty();
    }
    if (!decision.fast) {
        decision.command = commands.lookup(actionKey(decision.action));
        decision.amount = encoderAmount(event);
    }
}

void chooseCommands(EventDecision& decision, const HidEvent& event, const ControlCommands& commands) {
    decision.isMapButton = isMapButton(decision.action, commands.normalizedName);
    decision.kind = rpnKind(decision.action);
    if (decision.action == HidEventAction::ButtonRelease) {
        decision.cancelled = releasedCommands(commands);
    }
    if (decision.isMapButton) {
        decision.command = mapButtonCommand(decision.action, commands);
    } else if (isEncoder(decision.action)) {
        chooseEncoderCommand(decision, event, commands);
    } else {
        decision.command = commands.lookup(actionKey(decision.action));
    }
}

} // namespace

std::string_view actionKey(HidEventAction action) {
    switch (action) {
    case HidEventAction::ButtonPress:
        return "PRESS";
    case HidEventAction::ButtonRelease:
        return "RELEASE";
    case HidEventAction::Hold:
        return "HOLD";
    case HidEventAction::EncCw:
        return "CW";
    case HidEventAction::EncCcw:
        return "CCW";
    case HidEventAction::None:
        break;
    }
    return {};
}

EventDecision decideEvent(const AppConfig& config, const ButtonConfig& buttons, const HidEventMap& eventMap,
                          const HidEvent& event, const std::string& deviceName, int index) {
    EventDecision decision;
    decision.device = findDeviceEntry(config, deviceName, index);
    decision.role = roleOf(event, decision.device);
    decision.typeName = nameOf(eventMap.eventTypes, event.type);
    decision.controlName = nameOf(eventMap.controlIds, event.controlId);
    decision.action = HidProtocol::classify(event);
    const ControlCommands commands{buttons, normalizeName(decision.controlName), decision.role};
    decision.isListed = !decision.controlName.empty() && buttons.contains(commands.normalizedName);
    decision.pausesLights =
        event.type == HidProtocol::eventTypeBoardNotice ||
        (decision.isListed && decision.action == HidEventAction::Hold && commands.normalizedName == "NAV_SWAP");
    if (decision.isListed && config.mobiflight.enabled) {
        chooseCommands(decision, event, commands);
    } else if (!decision.isListed && decision.action == HidEventAction::ButtonPress) {
        decision.simEvent = builtInEvent(event.controlId);
    }
    return decision;
}
