#include "companion/setup/bridge_control.h"

#include "companion/doctor/bridge_program.h"
#include "platform/file_system.h"

#include <utility>

BridgeControl::BridgeControl(const Host& host, LineCallback onLine)
    : host(host), onLine(std::move(onLine)), program(bridgePath(host)) {}

bool BridgeControl::programExists() const {
    return FileSystem::existsOrFalse(program);
}

bool BridgeControl::isRunning() const {
    return wasStartedHere() || host.findProcess(isBridgeProcess);
}

bool BridgeControl::start(const std::string& configPath, std::string& error) {
    if (isRunning()) {
        error = "The bridge is already running";
        return false;
    }
    child = ChildProcess::start(program, {"--console", "--config", configPath}, onLine, error);
    if (child == nullptr) {
        error = program + " can't be started: " + error;
    }
    return child != nullptr;
}

void BridgeControl::end() {
    if (child != nullptr) {
        child->write("quit\n");
    }
}
