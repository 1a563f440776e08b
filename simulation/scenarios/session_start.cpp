#include "simulation/scenarios/session_start.h"

#include "config/app_config.h"
#include "simulation/scenarios/scenario_configuration.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr std::string_view opening = "opened ";
constexpr std::string_view registration = "command MF.Clients.Add.";
constexpr std::string_view subscription = "command MF.SimVars.Add.";

std::string lightCodeOf(const Scenario& scenario) {
    const JsonValue settings = scenarioSettings(scenario);
    const JsonValue* extensions = nullptr;
    std::string code = ExtensionsConfig().lightVariable;
    if (getObject(settings, "extensions", extensions)) {
        getString(*extensions, "lightVariable", code);
    }
    return code;
}

auto beginsWith(std::string_view start) {
    return [start](const std::string& text) { return text.starts_with(start); };
}

} // namespace

SessionStart::SessionStart(const Scenario& scenario, const BridgeRig& rig)
    : rig(rig),
      moduleUsed(scenarioSetting(scenario, "mobiflight", "enabled", 1) != 0),
      stateLogged(scenarioSetting(scenario, "logging", "debug", 0) != 0),
      lightCode(lightCodeOf(scenario)) {}

void SessionStart::note(const Observation& observation) {
    if (observation.stream == "sim") {
        received.push_back(observation.text);
    } else if (observation.stream == "log") {
        batteryKnown = batteryKnown || observation.text.starts_with("DEBUG State update: master battery");
        lightKnown = lightKnown || observation.text.starts_with("DEBUG State update: backlight");
    }
}

bool SessionStart::isComplete(bool withModule) const {
    const std::string_view last = lastLine(withModule);
    return handshakeSeen(last) && stateSeen(last) && boardsServed();
}

void SessionStart::forget() {
    received.clear();
    batteryKnown = false;
    lightKnown = false;
}

/// The beginning of the handshake's last line.
std::string_view SessionStart::lastLine(bool withModule) const {
    if (!moduleUsed || !rig.simulator().moduleRunning()) {
        return opening;
    }
    return withModule ? subscription : registration;
}

bool SessionStart::handshakeSeen(std::string_view last) const {
    const auto opened = std::find_if(received.begin(), received.end(), beginsWith(opening));
    return std::any_of(opened, received.end(), beginsWith(last));
}

bool SessionStart::stateSeen(std::string_view last) const {
    if (!stateLogged) {
        return true;
    }
    // The module doesn't write a value that is 0 from the start.
    const bool lightComes = last == subscription && rig.simulator().evaluate(lightCode) != 0;
    return batteryKnown && (lightKnown || !lightComes);
}

bool SessionStart::boardsServed() const {
    const std::vector<std::string> names = rig.usableBoards();
    return std::all_of(names.begin(), names.end(), [this](const std::string& name) {
        const VirtualBoard& board = rig.board(name);
        return board.simConnected().value_or(false) && board.led();
    });
}
