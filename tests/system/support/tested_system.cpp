#include "tests/system/support/tested_system.h"

#include <algorithm>
#include <cstdlib>

namespace {

std::string environment(const char* name, const std::string& otherwise) {
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nobody writes the environment
    return value != nullptr ? value : otherwise;
}

std::string chosen() {
    return environment("BRIDGE_TEST_SYSTEM", "linux");
}

std::string windowsBuild(const std::string& file) {
    return std::string(WINDOWS_BUILD_FOLDER "/") + file;
}

/// The prefix's own C: drive. Everything else of this machine is Z: to Wine.
std::string driveC() {
    return environment("WINEPREFIX", "") + "/drive_c";
}

} // namespace

bool TestedSystem::isWindows() {
    return chosen() != "linux";
}

bool TestedSystem::hasDll() {
    return chosen() == "windows-dll";
}

bool TestedSystem::overPipe() {
    return chosen() == "windows-pipe";
}

std::string TestedSystem::bridge() {
    return isWindows() ? windowsBuild("VantrelBridgeHID.exe") : BRIDGE_BUILT_EXECUTABLE;
}

std::string TestedSystem::simulator() {
    return isWindows() ? windowsBuild("simulation/virtual-simulator.exe") : SIMULATOR_BUILT_EXECUTABLE;
}

std::string TestedSystem::vantrel() {
    return isWindows() ? windowsBuild("vantrel.exe") : VANTREL_BUILT_EXECUTABLE;
}

std::string TestedSystem::simConnectDll() {
    return windowsBuild("simconnect-dll/SimConnect.dll");
}

std::vector<std::string> TestedSystem::command(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<std::string> result;
    if (isWindows()) {
        result.push_back(environment("WINELOADER", "/usr/lib/wine/wine64"));
    }
    result.push_back(program);
    result.insert(result.end(), arguments.begin(), arguments.end());
    return result;
}

std::string TestedSystem::machineDataFolder() {
    return isWindows() ? driveC() + "/ProgramData" : "/var/lib";
}

std::string TestedSystem::pathSeenByBridge(const std::string& path) {
    if (!isWindows()) {
        return path;
    }
    std::string result = path.starts_with(driveC()) ? "C:" + path.substr(driveC().size()) : "Z:" + path;
    std::replace(result.begin(), result.end(), '/', '\\');
    return result;
}
