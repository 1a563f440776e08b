#include "simulation/scenarios/scenario_configuration.h"

#include "hid/hid_protocol.h"
#include "simulation/scenarios/json_text.h"

#include <map>

namespace {

constexpr const char* baseSettings = R"({
  "hid": {"vid": "1234", "pid": "ABCD", "scanIntervalMs": 250},
  "mappings": {"buttonConfigPath": "buttons.json"},
  "logging": {"debug": 1},
  "outputs": {"debounceMs": 0}
})";

/// Empty when the scenario names no control: a map without controls is an error.
std::string eventMapText(const Scenario& scenario) {
    if (scenario.controls.empty()) {
        return "";
    }
    JsonValue root = jsonObject();
    JsonValue types = jsonObject();
    types.object["BUTTON"] = jsonNumber(HidProtocol::eventTypeButton);
    types.object["ENCODER"] = jsonNumber(HidProtocol::eventTypeEncoder);
    types.object["BOARD_NOTICE"] = jsonNumber(HidProtocol::eventTypeBoardNotice);
    JsonValue controls = jsonObject();
    for (const ScenarioControl& control : scenario.controls) {
        controls.object[control.name] = jsonNumber(control.id);
    }
    root.object["event_types"] = std::move(types);
    root.object["control_ids"] = std::move(controls);
    return jsonText(root);
}

JsonValue commandElement(const std::string& name, const JsonValue& commands) {
    JsonValue element = jsonObject();
    element.object["name"] = jsonString(name);
    element.object["commands"] = commands;
    return element;
}

std::string commandFileText(const Scenario& scenario) {
    std::map<std::string, JsonValue> byControl;
    for (const ScenarioCommand& command : scenario.commands) {
        JsonValue& actions = byControl.try_emplace(command.control, jsonObject()).first->second;
        if (!command.action.empty()) {
            JsonValue& roles = actions.object[command.action];
            roles.type = JsonType::Object;
            roles.object[command.role] = jsonString(command.text);
        }
    }
    JsonValue buttons;
    buttons.type = JsonType::Array;
    for (const auto& [name, actions] : byControl) {
        buttons.array.push_back(commandElement(name, actions));
    }
    JsonValue root = jsonObject();
    root.object["buttons"] = std::move(buttons);
    return jsonText(root);
}

std::map<std::string, std::string> configurationFiles(const Scenario& scenario) {
    std::map<std::string, std::string> files{
        {"config.json", jsonText(scenarioSettings(scenario))},
        {"buttons.json", commandFileText(scenario)},
    };
    if (const std::string map = eventMapText(scenario); !map.empty()) {
        files["hid_event_map.json"] = map;
    }
    for (const auto& [name, text] : scenario.files) {
        files[name] = text;
    }
    for (const std::string& name : scenario.missingFiles) {
        files.erase(name);
    }
    return files;
}

} // namespace

JsonValue scenarioSettings(const Scenario& scenario) {
    JsonValue settings = JsonParser::parse(baseSettings).value;
    for (const JsonValue& layer : scenario.settings) {
        overlayJson(settings, layer);
    }
    return settings;
}

std::int32_t scenarioSetting(const Scenario& scenario, std::string_view section, std::string_view key,
                             std::int32_t otherwise) {
    const JsonValue settings = scenarioSettings(scenario);
    const JsonValue* members = nullptr;
    std::int32_t value = otherwise;
    if (getObject(settings, section, members)) {
        getInt(*members, key, value);
    }
    return value;
}

RigSettings rigSettings(const Scenario& scenario, const Pace& pace) {
    RigSettings settings;
    settings.boards = scenario.boards;
    settings.files = configurationFiles(scenario);
    settings.consoleMode = scenario.consoleMode;
    settings.hotPlugNotifications = scenario.hotPlugNotifications;
    settings.moduleInstalled = scenario.moduleInstalled;
    settings.pace = pace;
    return settings;
}
