#include "companion/doctor/bridge_program.h"

#include "app/app_paths.h"
#include "app/program_names.h"
#include "platform/file_system.h"
#include "text/ascii.h"

namespace {

constexpr std::string_view executableEnding = ".exe";

bool isExecutableName(std::string_view name) {
    return name.size() > executableEnding.size() &&
           equalsIgnoringCase(name.substr(name.size() - executableEnding.size()), executableEnding);
}

/// With or without ".exe".
bool isProcessOf(std::string_view name, std::string_view program) {
    if (isExecutableName(name)) {
        name.remove_suffix(executableEnding.size());
    }
    return equalsIgnoringCase(name, program);
}

} // namespace

std::string bridgePath(const Host& host) {
    std::string name = programName;
    name += isExecutableName(host.executablePath()) ? executableEnding : "";
    return FileSystem::join(exeDirectory(host), name);
}

bool isBridgeProcess(std::string_view name) {
    return isProcessOf(name, programName);
}

bool isSimulatorProcess(std::string_view name) {
    return isProcessOf(name, "FlightSimulator") || isProcessOf(name, "FlightSimulator2024");
}
