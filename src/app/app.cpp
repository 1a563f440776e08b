#include "app/app.h"

#include "app/app_paths.h"
#include "app/program_names.h"
#include "logging/logger.h"
#include "platform/file_system.h"
#include "text/ascii.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <utility>

namespace {

constexpr std::chrono::milliseconds stopPollInterval{100};

std::string notFoundError(const Host& host, const std::string& configPath) {
    std::string text = "Config file not found: " + configPath;
    const std::vector<std::string> candidates = configCandidates(host);
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        text += (i == 0 ? " (default search order: " : "; ") + candidates[i];
    }
    return candidates.empty() ? text : text + ")";
}

void logSystemNotice(const Host& host) {
    const std::string notice = host.systemNotice ? host.systemNotice() : std::string();
    if (!notice.empty()) {
        logWarn(notice);
    }
}

} // namespace

// The parameter is moved from first, so the subsystems get their records from the member.
App::App(Platform platform)
    : platform(std::move(platform)),
      hid(this->platform.hid, this->platform.host),
      mobiflight(this->platform.simConnect, this->platform.host),
      simConnect(this->platform.simConnect, this->platform.host),
      mapping(this->platform.host) {}

// A thread that is still running would go on using members that no longer exist. Ending the process is the lesser evil.
App::~App() {
    if (notifyThread.joinable()) {
        std::terminate();
    }
    cdcReader.stop();
    if (cdcReader.joinable()) {
        std::terminate();
    }
}

bool App::init(const std::string& configPath, bool consoleMode, std::string& error) {
    this->consoleMode = consoleMode;
    const std::string exeDir = exeDirectory(platform.host);
    const std::string commonAppData = commonAppDataDirectory(platform.host);
    Logger::instance().configure(logDirectory(consoleMode, commonAppData, exeDir), programName, consoleMode);
    logInfo("Initializing application");
    logSystemNotice(platform.host);
    if (!FileSystem::exists(configPath)) {
        error = notFoundError(platform.host, configPath);
        logError(error);
        return false;
    }
    return loadConfiguration(configPath, error) && startSubsystems(error);
}

// The event map is optional; the other two files are not. A bad config.json fills the caller's `error`, a bad command
// file doesn't: its reason is in the line that is logged here, and the one that `main` adds gives none.
bool App::loadConfiguration(const std::string& configPath, std::string& error) {
    if (!loadAppConfig(configPath, config, error)) {
        logError(error);
        return false;
    }
    if (hidTraceOverrideSet) {
        config.hid.trace = hidTraceOverrideValue;
    }
    Logger::instance().setDebugEnabled(config.logging.debug || config.hid.trace);
    logInfo("Configuration loaded");

    std::string reason;
    if (!config.mappings.hidEventMapPath.empty() && !eventMap.load(config.mappings.hidEventMapPath, reason)) {
        logWarn("Failed to load HID event map: " + reason);
    }
    reason.clear();
    if (!buttons.load(config.mappings.buttonConfigPath, reason)) {
        logError("Failed to load button config: " + reason);
        return false;
    }
    return true;
}

// All wiring between the subsystems is here and in startSimulatorClients. Only the boards' failure fills the caller's
// `error`. The reason for every other failure is in the line logged here, and the line that `main` adds gives none.
// People and tools rely on exactly these lines.
bool App::startSubsystems(std::string& error) {
    // The mapping engine first, so that no event comes before it runs.
    std::string reason;
    if (!mapping.start(&config, &hid, &simConnect, &mobiflight, &buttons, &eventMap, &simState, reason)) {
        logError("Failed to start mapping engine: " + reason);
        return false;
    }

    mobiflight.setLVarHandler([this](const std::string& text) { mapping.onBacklightPayload(text); });
    if (!startBoards(error) || !startSimulatorClients()) {
        stopSubsystems();
        return false;
    }

    // A bridge without notifications still finds its boards, at its periodic scan.
    reason.clear();
    if (!startDeviceNotifications(reason)) {
        logWarn("Failed to register HID device notifications: " + reason);
    }
    if (config.cdc.enabled) {
        logWarn("CDC debug requested but this build does not include CDC support");
    }
    // Comes last, when everything is up and not only the boards: people and tools wait for this line.
    logInfo("HID manager started");
    return true;
}

bool App::startBoards(std::string& error) {
    const HidManagerSettings settings{config.hid.vid,
                                      config.hid.pid,
                                      config.hid.readIntervalMs,
                                      config.hid.scanIntervalMs,
                                      config.extensions.singlePendingRead,
                                      config.extensions.reopenStoppedReaders};
    hid.setTraceEnabled(config.hid.trace);
    const auto onHidEvent = [this](const HidProtocol::HidEvent& event, const std::string& deviceName, int index) {
        mapping.submitEvent(event, deviceName, index);
    };
    if (!hid.start(settings, onHidEvent, error)) {
        logError("Failed to start HID manager: " + error);
        return false;
    }
    return true;
}

bool App::startSimulatorClients() {
    std::string reason;
    mobiflight.setExtensions(config.extensions);
    if (!mobiflight.start(&simConnect, config.mobiflight, reason)) {
        logError("Failed to start MobiFlight client: " + reason);
        return false;
    }
    simConnect.setBatteryIndex(config.extensions.batteryIndex);
    simConnect.setBatteryCallback([this](bool on) { onBattery(on); });
    simConnect.setQuitCallback([this] { requestStop(); });
    const auto onConnection = [this](bool connected) { onConnectionChange(connected); };
    const auto deviceReady = [this] { return hid.hasDevices(); };
    if (!simConnect.start(programName, onConnection, deviceReady, reason)) {
        logError("Failed to start SimConnect client: " + reason);
        return false;
    }
    return true;
}

void App::run() {
    logInfo("Application run loop started");
    if (consoleMode) {
        platform.host.startThread([this] { consoleLoop(); }).detach();
    }
    // Polled, because the control handler may run in a signal frame, where it can set a flag but not wake a thread.
    while (!stopRequested.load()) {
        std::this_thread::sleep_for(stopPollInterval);
    }
    stopDeviceNotifications();
    stopSubsystems();
    logInfo("Application run loop stopped");
}

void App::requestStop() {
    stopRequested.exchange(true);
}

void App::setHidTraceOverride(bool value) {
    hidTraceOverrideSet = true;
    hidTraceOverrideValue = value;
}

// The simulator client stops before the boards do, so that the end of the session still reaches them.
void App::stopSubsystems() {
    cdcReader.stop();
    mapping.stop();
    mobiflight.stop();
    simConnect.stop();
    hid.stop();
}

void App::onConnectionChange(bool connected) {
    hid.sendSimStatus(connected);
    mobiflight.onSimConnectState(connected);
    mapping.simConnected.store(connected);
    {
        const std::lock_guard lock(simState.mutex);
        simState.connected = connected;
        simState.connectedKnown = true;
    }
    mapping.requestOutputUpdate();
}

void App::onBattery(bool on) {
    {
        const std::lock_guard lock(simState.mutex);
        simState.batteryOn = on;
        simState.batteryKnown = true;
    }
    mapping.requestOutputUpdate();
    Logger::instance().debug("State update: master battery " + std::to_string(config.extensions.batteryIndex) + "=" +
                             (on ? "1" : "0"));
}

// Detached and never joined: after a stop from elsewhere it stays blocked in its read until the process ends.
void App::consoleLoop() {
    logInfo("Console commands: bootsel, quit");
    std::string line;
    while (!stopRequested.load() && std::getline(std::cin, line)) {
        // Not trimmed: a line with a blank in it isn't a command.
        line = lowerCased(line);
        if (line == "bootsel" || line == "boot") {
            logInfo("Sending BOOTSEL command to devices");
            hid.sendBootselCommand();
        } else if (line == "quit" || line == "exit") {
            logInfo("Stop requested from console");
            requestStop();
            return;
        }
    }
}
