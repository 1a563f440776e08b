#include "companion/demo/cockpit_action.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>

namespace {

/// The members that a kind needs besides its name.
enum class Needs { Nothing, Board, Control, Turn, Command };

struct KnownAction {
    std::string_view name;
    CockpitActionKind kind;
    Needs needs;
};

constexpr std::array knownActions{
    KnownAction{"press", CockpitActionKind::Press, Needs::Control},
    KnownAction{"release", CockpitActionKind::Release, Needs::Control},
    KnownAction{"turn", CockpitActionKind::Turn, Needs::Turn},
    KnownAction{"plug", CockpitActionKind::Plug, Needs::Board},
    KnownAction{"unplug", CockpitActionKind::Unplug, Needs::Board},
    KnownAction{"sim", CockpitActionKind::ControlSimulator, Needs::Command},
    KnownAction{"start-bridge", CockpitActionKind::StartBridge, Needs::Nothing},
    KnownAction{"stop-bridge", CockpitActionKind::StopBridge, Needs::Nothing},
};

/// A whole number within the bounds of the member's type.
template <typename Number>
bool readNumber(const JsonValue& json, std::string_view key, Number& number, std::string& error) {
    constexpr double least = std::numeric_limits<Number>::min();
    constexpr double most = std::numeric_limits<Number>::max();
    const JsonValue* const member = find(json, key);
    if (member == nullptr || member->type != JsonType::Number || std::trunc(member->number) != member->number ||
        member->number < least || member->number > most) {
        error = std::string{"\""}.append(key).append("\" is missing or out of its range");
        return false;
    }
    number = static_cast<Number>(member->number);
    return true;
}

bool readBoard(const JsonValue& json, CockpitAction& action, std::string& error) {
    if (!getString(json, "board", action.board) || action.board.empty()) {
        error = "\"board\" is missing";
        return false;
    }
    return true;
}

bool readControl(const JsonValue& json, CockpitAction& action, std::string& error) {
    return readBoard(json, action, error) && readNumber(json, "control", action.control, error);
}

bool readTurn(const JsonValue& json, CockpitAction& action, std::string& error) {
    return readControl(json, action, error) && readNumber(json, "detents", action.detents, error) &&
           readNumber(json, "speed", action.speed, error);
}

bool readCommand(const JsonValue& json, CockpitAction& action, std::string& error) {
    if (!getString(json, "command", action.command)) {
        error = "\"command\" is missing";
        return false;
    }
    return true;
}

bool readNeeds(Needs needs, const JsonValue& json, CockpitAction& action, std::string& error) {
    switch (needs) {
    case Needs::Nothing:
        break;
    case Needs::Board:
        return readBoard(json, action, error);
    case Needs::Control:
        return readControl(json, action, error);
    case Needs::Turn:
        return readTurn(json, action, error);
    case Needs::Command:
        return readCommand(json, action, error);
    }
    return true;
}

} // namespace

bool concernsBoard(CockpitActionKind kind) {
    return kind <= CockpitActionKind::Unplug;
}

bool readCockpitAction(const JsonValue& json, CockpitAction& action, std::string& error) {
    std::string name;
    getString(json, "do", name);
    const auto* const known = std::ranges::find(knownActions, name, &KnownAction::name);
    if (known == knownActions.end()) {
        error = "unknown action \"" + name + '"';
        return false;
    }
    action.kind = known->kind;
    return readNeeds(known->needs, json, action, error);
}
