#include "companion/setup/bridge_control.h"

#include "app/app_paths.h"
#include "app/program_names.h"
#include "platform/file_system.h"
#include "text/ascii.h"

#include <string_view>
#include <utility>

namespace {

std::string bridgeFileName(const Host& host) {
    const std::string extension = ".exe";
    const bool hasExtension = lowerCased(host.executablePath()).ends_with(extension);
    return hasExtension ? programName + extension : programName;
}

} // namespace

BridgeControl::BridgeControl(const Host& host, LineCallback onLine)
    : host(host), onLine(std::move(onLine)), program(FileSystem::join(exeDirectory(host), bridgeFileName(host))) {}

bool BridgeControl::programExists() const {
    return FileSystem::existsOrFalse(program);
}

bool BridgeControl::isRunning() const {
    const std::string name = FileSystem::fileName(program);
    return wasStartedHere() ||
           host.findProcess([&](std::string_view process) { return equalsIgnoringCase(process, name); });
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
