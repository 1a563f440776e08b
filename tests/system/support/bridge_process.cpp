#include "tests/system/support/bridge_process.h"

#include "platform/file_system.h"
#include "tests/support/wait_until.h"
#include "tests/system/support/tested_system.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace {

const std::string logName = "VantrelBridgeHID.log";

std::string simConnectSettings(std::uint16_t port) {
    return "[SimConnect]\nProtocol=Ipv4\nAddress=127.0.0.1\nPort=" + std::to_string(port) + "\n";
}

std::string contentOf(const std::string& path) {
    std::string text;
    FileSystem::readFile(path, text);
    return text;
}

std::string withPlainLineEnds(std::string text) {
    std::erase(text, '\r');
    return text;
}

/// In console mode it logs beside the executable.
std::string logFolder(const BridgeInstallation& installation, const std::vector<std::string>& arguments) {
    const bool inConsole = std::find(arguments.begin(), arguments.end(), "--console") != arguments.end();
    return inConsole ? installation.path("") : TestedSystem::machineDataFolder() + "/VantrelBridge/logs/";
}

} // namespace

std::size_t countOf(std::string_view text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

void installProgram(const std::string& program, const std::string& target) {
    std::error_code error;
    std::filesystem::create_hard_link(program, target, error);
    if (error) {
        std::filesystem::copy_file(program, target);
    }
}

BridgeInstallation::BridgeInstallation(const BridgeFiles& files, std::optional<std::uint16_t> simulatorPort) {
    installProgram(TestedSystem::bridge(), executable());
    if (TestedSystem::hasDll()) {
        installProgram(TestedSystem::simConnectDll(), folder.path("SimConnect.dll"));
    }
    if (simulatorPort) {
        folder.write("SimConnect.cfg", simConnectSettings(*simulatorPort));
    }
    for (const auto& [name, text] : files) {
        folder.write("config/" + name, text);
    }
}

std::string BridgeInstallation::executable() const {
    return folder.path(TestedSystem::isWindows() ? "VantrelBridgeHID.exe" : "VantrelBridgeHID");
}

BridgeProcess::BridgeProcess(const BridgeInstallation& installation, const std::vector<std::string>& arguments,
                             ChildProcessSettings settings)
    : logFile(logFolder(installation, arguments) + logName), logStart(contentOf(logFile).size()) {
    settings.command = TestedSystem::command(installation.executable(), arguments);
    // No SimConnect.cfg of the real home folder takes part.
    settings.environment = {"HOME=" + installation.path("home")};
    child = std::make_unique<ChildProcess>(settings);
}

std::string BridgeProcess::log() const {
    const std::string text = contentOf(logFile);
    return withPlainLineEnds(text.substr(std::min(logStart, text.size())));
}

std::string BridgeProcess::output() const {
    return withPlainLineEnds(child->output() + child->errorOutput());
}

std::size_t BridgeProcess::countInLog(std::string_view text) const {
    return countOf(log(), text);
}

bool BridgeProcess::waitForLog(std::string_view text, std::size_t count) const {
    return waitUntil([&] { return countInLog(text) >= count; }, ChildProcess::defaultLimit, logPause);
}
