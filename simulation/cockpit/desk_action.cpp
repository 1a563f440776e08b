#include "simulation/cockpit/desk_action.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>

namespace {

/// What a deed needs beside its name.
enum class Needs { Nothing, Board, Control, Turn, Switch, Percent };

struct KnownDeed {
    std::string_view name;
    DeskDeed deed;
    Needs needs;
};

constexpr std::array knownDeeds{
    KnownDeed{"press", DeskDeed::Press, Needs::Control},
    KnownDeed{"release", DeskDeed::Release, Needs::Control},
    KnownDeed{"turn", DeskDeed::Turn, Needs::Turn},
    KnownDeed{"plug", DeskDeed::Plug, Needs::Board},
    KnownDeed{"unplug", DeskDeed::Unplug, Needs::Board},
    KnownDeed{"start-simulator", DeskDeed::StartSimulator, Needs::Nothing},
    KnownDeed{"quit-simulator", DeskDeed::QuitSimulator, Needs::Nothing},
    KnownDeed{"crash-simulator", DeskDeed::CrashSimulator, Needs::Nothing},
    KnownDeed{"drop-sessions", DeskDeed::DropSessions, Needs::Nothing},
    KnownDeed{"refuse-sessions", DeskDeed::RefuseSessions, Needs::Switch},
    KnownDeed{"silence-module", DeskDeed::SilenceModule, Needs::Switch},
    KnownDeed{"fail-registrations", DeskDeed::FailRegistrations, Needs::Switch},
    KnownDeed{"battery", DeskDeed::SwitchBattery, Needs::Switch},
    KnownDeed{"light", DeskDeed::SetLight, Needs::Percent},
    KnownDeed{"start-bridge", DeskDeed::StartBridge, Needs::Nothing},
    KnownDeed{"stop-bridge", DeskDeed::StopBridge, Needs::Nothing},
};

/// A whole number within the bounds of the member's type, or within narrower ones.
template <typename Number>
bool readNumber(const JsonValue& json, std::string_view key, Number& number, std::string& error,
                double least = std::numeric_limits<Number>::min(), double most = std::numeric_limits<Number>::max()) {
    const JsonValue* const member = find(json, key);
    if (member == nullptr || member->type != JsonType::Number || std::trunc(member->number) != member->number ||
        member->number < least || member->number > most) {
        error = std::string{"\""}.append(key).append("\" is missing or out of its range");
        return false;
    }
    number = static_cast<Number>(member->number);
    return true;
}

bool readBoard(const JsonValue& json, DeskAction& action, std::string& error) {
    if (!getString(json, "board", action.board) || action.board.empty()) {
        error = "\"board\" is missing";
        return false;
    }
    return true;
}

bool readControl(const JsonValue& json, DeskAction& action, std::string& error) {
    return readBoard(json, action, error) && readNumber(json, "control", action.control, error);
}

bool readTurn(const JsonValue& json, DeskAction& action, std::string& error) {
    return readControl(json, action, error) && readNumber(json, "detents", action.detents, error) &&
           readNumber(json, "speed", action.speed, error);
}

bool readSwitch(const JsonValue& json, DeskAction& action, std::string& error) {
    const JsonValue* const on = find(json, "on");
    if (on == nullptr || on->type != JsonType::Boolean) {
        error = "\"on\" is missing";
        return false;
    }
    action.on = on->boolean;
    return true;
}

bool readNeeds(Needs needs, const JsonValue& json, DeskAction& action, std::string& error) {
    switch (needs) {
    case Needs::Nothing:
        break;
    case Needs::Board:
        return readBoard(json, action, error);
    case Needs::Control:
        return readControl(json, action, error);
    case Needs::Turn:
        return readTurn(json, action, error);
    case Needs::Switch:
        return readSwitch(json, action, error);
    case Needs::Percent:
        return readNumber(json, "percent", action.percent, error, 0, 100);
    }
    return true;
}

} // namespace

bool concernsBoard(DeskDeed deed) {
    return deed <= DeskDeed::Unplug;
}

bool concernsSimulator(DeskDeed deed) {
    return deed >= DeskDeed::StartSimulator && deed <= DeskDeed::SetLight;
}

bool readDeskAction(const JsonValue& json, DeskAction& action, std::string& error) {
    std::string name;
    getString(json, "do", name);
    const auto* const known = std::ranges::find(knownDeeds, name, &KnownDeed::name);
    if (known == knownDeeds.end()) {
        error = "unknown action \"" + name + '"';
        return false;
    }
    action.deed = known->deed;
    return readNeeds(known->needs, json, action, error);
}
