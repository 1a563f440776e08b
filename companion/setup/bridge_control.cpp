#include "companion/setup/bridge_control.h"

#include "companion/doctor/bridge_program.h"
#include "platform/file_system.h"

#include <utility>

BridgeControl::BridgeControl(const Host& host, ProcessControl processes, LineCallback onLine)
    : processes(std::move(processes)), onLine(std::move(onLine)), program(bridgePath(host)) {}

bool BridgeControl::programExists() const {
    return FileSystem::existsOrFalse(program);
}

bool BridgeControl::start(const std::string& configPath, std::string& error) {
    if (wasStartedHere() || running()) {
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

bool BridgeControl::endOther(std::int64_t process, std::string& error) {
    // Its number may be another process's by now.
    const std::optional<RunningBridge> bridge = running();
    error = bridge && bridge->process == process ? processes.end(process) : "this bridge has already ended";
    error = error.empty() ? "" : "The bridge wasn't ended: " + error;
    return error.empty();
}
