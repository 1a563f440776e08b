#include "companion/demo/panel_json.h"

#include "companion/page/page_values.h"
#include "config/names.h"
#include "simulation/rig/stream_texts.h"
#include "simulation/scenarios/json_text.h"
#include "simulation/simulator/simulator_controls.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

namespace {

constexpr std::array<std::string_view, 7> actions{"PRESS", "HOLD", "RELEASE", "CW", "CCW", "CW_FAST", "CCW_FAST"};
constexpr std::array<std::string_view, 4> turns{"CW", "CCW", "CW_FAST", "CCW_FAST"};
constexpr std::array<std::string_view, 3> roles{"PFD", "MFD", "DEFAULT"};

/// On any panel: a knob that does something on one of them is a knob on the other too.
bool isKnob(const ButtonConfig& buttons, const std::string& name) {
    return std::ranges::any_of(turns, [&](std::string_view action) {
        return std::ranges::any_of(roles,
                                   [&](std::string_view role) { return !buttons.lookup(name, action, role).empty(); });
    });
}

JsonValue commandsOf(const ButtonConfig& buttons, const std::string& name, const std::string& role) {
    JsonValue commands = jsonObject();
    for (const std::string_view action : actions) {
        if (const std::string command = buttons.lookup(name, action, role); !command.empty()) {
            commands.object[std::string(action)] = jsonString(command);
        }
    }
    return commands;
}

JsonValue lightRecord(const LedCommand& led) {
    JsonValue light = jsonObject();
    for (const auto& [name, value] : lightMembers(led)) {
        light.object[name] = jsonNumber(value);
    }
    light.object["text"] = jsonString(ledText(led));
    return light;
}

} // namespace

JsonValue jsonBool(bool value) {
    JsonValue json;
    json.type = JsonType::Boolean;
    json.boolean = value;
    return json;
}

JsonValue panelControls(const CockpitConfiguration& configuration, const std::string& role) {
    JsonValue controls;
    controls.type = JsonType::Array;
    for (const auto& [id, name] : configuration.eventMap.controlIds) {
        if (id < 0 || id > std::numeric_limits<std::uint16_t>::max()) {
            continue;
        }
        JsonValue control = jsonObject();
        control.object["id"] = jsonNumber(id);
        control.object["name"] = jsonString(name);
        control.object["kind"] = jsonString(isKnob(configuration.buttons, name) ? "knob" : "button");
        control.object["listed"] = jsonBool(configuration.buttons.contains(normalizeName(name)));
        control.object["commands"] = commandsOf(configuration.buttons, name, role);
        controls.array.push_back(std::move(control));
    }
    return controls;
}

JsonValue boardState(const VirtualBoard& board) {
    JsonValue state = jsonObject();
    const auto led = board.led();
    const auto connected = board.simConnected();
    state.object["light"] = led ? lightRecord(*led) : JsonValue();
    state.object["simConnected"] = connected ? jsonBool(*connected) : JsonValue();
    return state;
}

JsonValue eventRecord(const HidEventLine& event) {
    JsonValue record = jsonObject();
    record.object["action"] = jsonString(std::string(event.action));
    record.object["control"] = jsonString(std::string(event.controlName));
    record.object["simEventSent"] = jsonBool(event.simEventSent);
    record.object["rpnQueued"] = jsonBool(event.rpnQueued);
    return record;
}

JsonValue simulatorControlLabels() {
    JsonValue labels;
    labels.type = JsonType::Array;
    for (const SimulatorControl& control : simulatorControls()) {
        if (!control.label.empty()) {
            JsonValue label = jsonObject();
            label.object["word"] = jsonString(std::string(control.word));
            label.object["label"] = jsonString(std::string(control.label));
            label.object["help"] = jsonString(std::string(control.help));
            labels.array.push_back(std::move(label));
        }
    }
    return labels;
}
