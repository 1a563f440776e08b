#include "companion/live/live_text.h"

#include "hid/hex_text.h"
#include "mapping/event_decision.h"
#include "text/wording.h"

#include <array>
#include <cstdio>
#include <cstdlib>

using HidProtocol::HidEventAction;

namespace {

/// "PFD, MFD and COPILOT".
std::string listText(const std::vector<std::string>& words) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        text += i == 0 ? "" : i + 1 == words.size() ? " and " : ", ";
        text += words[i].empty() ? "a board without a role" : words[i];
    }
    return text;
}

std::string turnText(const char* direction, const HidProtocol::HidEvent& event) {
    std::string text = std::string(direction) + ' ' + std::to_string(std::abs(static_cast<int>(event.value)));
    return event.speed == 0 ? text : text + ", speed " + std::to_string(event.speed);
}

std::string commandText(const DecodedEvent& decoded) {
    const std::string times = decoded.times == 1 ? "" : ' ' + std::to_string(decoded.times) + " times";
    return "sends " + decoded.command + times + (decoded.fast ? " (fast turn)" : "");
}

std::string roleReason(const DecodedEvent& decoded) {
    return inQuotes(decoded.controlName) + " has a " + std::string(actionKey(decoded.action)) + " command for " +
           listText(decoded.otherRoles) +
           (decoded.role.empty() ? ", but the board has no role" : ", but not for " + decoded.role);
}

/// Why the bridge sends nothing.
std::string reasonText(const DecodedEvent& decoded) {
    switch (decoded.answer) {
    case BridgeAnswer::EndsRepeat:
        return "the release of a map button ends its repeat";
    case BridgeAnswer::BoardNotice:
        return "the board uses its lights itself for a moment";
    case BridgeAnswer::UnknownType:
        return "the bridge knows no events of this type";
    case BridgeAnswer::UnknownValue:
        return "the value is neither a press nor a release, a hold or a turn";
    case BridgeAnswer::OnlyPressFires:
        return "only the press of this control fires an event, " + decoded.command;
    case BridgeAnswer::NumberWithoutName:
        return "the event map has no name for control " + std::to_string(decoded.event.controlId);
    case BridgeAnswer::NotListed:
        return "the command file doesn't list " + inQuotes(decoded.controlName);
    case BridgeAnswer::MobiFlightDisabled:
        return "\"mobiflight.enabled\" is 0 in config.json";
    case BridgeAnswer::RoleWithoutCommand:
        return roleReason(decoded);
    default:
        return inQuotes(decoded.controlName) + " has no " + std::string(actionKey(decoded.action)) + " command";
    }
}

std::string secondsText(std::int64_t nanoseconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%8.3f", static_cast<double>(nanoseconds) / 1e9);
    return text.data();
}

std::string eventText(const DecodedEvent& decoded) {
    return (decoded.role.empty() ? "no role" : decoded.role) + "  " + controlText(decoded) + ' ' + actionText(decoded) +
           ": " + answerText(decoded);
}

} // namespace

std::string actionText(const DecodedEvent& decoded) {
    switch (decoded.action) {
    case HidEventAction::ButtonPress:
        return "press";
    case HidEventAction::ButtonRelease:
        return "release";
    case HidEventAction::Hold:
        return "hold";
    case HidEventAction::EncCw:
        return turnText("clockwise", decoded.event);
    case HidEventAction::EncCcw:
        return turnText("counter-clockwise", decoded.event);
    case HidEventAction::None:
        break;
    }
    return "type " + std::to_string(decoded.event.type) + ", value " + std::to_string(decoded.event.value);
}

std::string controlText(const DecodedEvent& decoded) {
    const std::string number = std::to_string(decoded.event.controlId);
    return decoded.controlName.empty() ? "control " + number : decoded.controlName + " (" + number + ')';
}

std::string answerText(const DecodedEvent& decoded) {
    switch (decoded.answer) {
    case BridgeAnswer::SendsCommand:
        return commandText(decoded);
    case BridgeAnswer::RepeatsCommand:
        return "repeats " + decoded.command + " until the release";
    case BridgeAnswer::FiresEvent:
        return "fires the simulator's event " + decoded.command;
    default:
        return "sends nothing: " + reasonText(decoded);
    }
}

std::string arrivalText(const LiveBoard& board) {
    return "board " + board.name + " is there" +
           (board.configuredRole.empty() ? ", no role in the configuration" : ", role " + board.configuredRole) + '\n';
}

std::string reportText(const LiveReport& report, std::int64_t begin, bool raw) {
    std::string text = secondsText(report.time - begin) + "  " + report.board + "  ";
    text += report.event ? eventText(*report.event) : "sends nothing: the report can't be read: " + report.problem;
    text += '\n';
    return raw ? text + "          " + hexText(report.bytes) + '\n' : text;
}
