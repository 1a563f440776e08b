// The actions on the simulator and the bridge.

#include "companion/setup/action_members.h"
#include "companion/setup/setup_controller.h"
#include "platform/file_system.h"
#include "simulation/rig/simulator_library.h"

bool SetupController::chooseSimulator(const JsonValue& json, std::string& error) {
    {
        const std::lock_guard lock(mutex);
        state.simulatorIsVirtual = memberFlag(json, "virtual");
    }
    const bool started = startLink(error);
    look();
    return started;
}

Platform SetupController::linkPlatform() const {
    Platform chosen = platform;
    if (state.simulatorIsVirtual) {
        chosen.simConnect = simulatorLibrary(virtualSimulator);
        chosen.host.findProcess = [](const auto& visit) { return visit("FlightSimulator.exe"); };
    }
    return chosen;
}

bool SetupController::startLink(std::string& error) {
    link.reset();
    const Platform chosen = linkPlatform();
    link = std::make_unique<ModuleLink>(chosen.simConnect, chosen.host);
    return link->start(configuration().forBridge()->settings.mobiflight, error);
}

bool SetupController::tryCommand(const JsonValue& json, std::string& error) {
    if (link->state() != LinkState::Ready) {
        error = std::string("The simulator isn't ready: it ") + linkStateText(link->state());
        return false;
    }
    if (!link->send(memberText(json, "command"), error)) {
        return false;
    }
    reach(&SetupProgress::tried);
    return true;
}

bool SetupController::registerProgram(const JsonValue&, std::string& error) {
    if (!configuration().files().exist()) {
        error = "Save the configuration first: the simulator starts the bridge with the saved one";
        return false;
    }
    if (!bridge.programExists()) {
        error = "There is no bridge at " + bridge.programPath();
        return false;
    }
    const std::string& path = configuration().files().paths()[ConfigurationPart::Settings];
    const auto changes =
        registerBridge(platform.host, bridge.programPath(), FileSystem::resolved(path).value_or(path), error);
    events.publish("registration", changesJson(changes));
    look();
    return error.empty();
}

bool SetupController::unregisterProgram(const JsonValue&, std::string& error) {
    events.publish("registration", changesJson(unregisterBridge(platform.host, error)));
    look();
    return error.empty();
}

bool SetupController::repair(const JsonValue& json, std::string& error) {
    const JsonValue* const shown = find(json, "repair");
    const JsonValue agreed = shown == nullptr ? JsonValue() : *shown;
    return checks.repair(memberText(json, "code"), memberText(json, "title"),
                         {memberText(agreed, "code"), memberText(agreed, "path"), memberText(agreed, "text")}, error);
}

bool SetupController::startBridge(const JsonValue&, std::string& error) {
    if (!configuration().files().exist()) {
        error = "Save the configuration first: the bridge reads the saved one";
        return false;
    }
    const bool started = bridge.start(configuration().files().paths()[ConfigurationPart::Settings], error);
    look();
    return started;
}

bool SetupController::endBridge(const JsonValue& json, std::string& error) {
    if (!bridge.wasStartedHere()) {
        return bridge.endOther(memberNumber(json, "process"), error);
    }
    bridge.end();
    return true;
}
