#include "config/output_profiles.h"
#include "logging/logger.h"
#include "mapping/mapping_engine.h"
#include "mapping/output_state.h"

#include <algorithm>

namespace {

/// Brings fresh boards up to date without news from anybody.
constexpr std::int64_t refreshNs = 1'000'000'000;

/// How long a board keeps its lights to itself.
constexpr std::int64_t pauseNs = 1'500'000'000;

std::string ledPauseKey(const std::string& deviceName, int index) {
    return deviceName.empty() ? std::string("#").append(std::to_string(index)) : deviceName;
}

/// What the log calls the cockpit light: the standard variable by its name, another one as the configuration writes it.
std::string lightLabel(const AppConfig* config) {
    const bool isStandard = config == nullptr || config->extensions.lightVariable == ExtensionsConfig().lightVariable;
    return isStandard ? std::string(backlightVariable) : config->extensions.lightVariable;
}

/// The state that the lights depend on: the battery and the backlight, each as it was at one moment.
struct SimSnapshot {
    bool batteryKnown = false;
    bool batteryOn = false;
    bool backlightKnown = false;
    double backlightValue = 0.0;
};

// Two looks under the lock, not one: the simulator sends battery and backlight in messages of their own, so no pair of
// them is more right than another, and what changes between the looks has asked for a pass of its own.
SimSnapshot readState(SharedSimState& state) {
    SimSnapshot snapshot;
    {
        const std::lock_guard lock(state.mutex);
        snapshot.batteryKnown = state.batteryKnown;
        snapshot.batteryOn = state.batteryOn;
    }
    const std::lock_guard lock(state.mutex);
    snapshot.backlightKnown = state.backlightKnown;
    snapshot.backlightValue = state.backlightValue;
    return snapshot;
}

} // namespace

void MappingEngine::requestOutputUpdate() {
    const std::lock_guard lock(outputMutex);
    outputDirty = true;
    lastOutputRequest = host.now();
    outputCondition.notify_one();
}

void MappingEngine::onBacklightPayload(const std::string& text) {
    double value = 0.0;
    if (!parseBacklightPayload(text, value)) {
        if (text.find(backlightVariable) != std::string::npos) {
            logWarn("Backlight LVar payload received but could not be parsed: " + text);
        }
        return;
    }
    if (simState != nullptr) {
        const std::lock_guard lock(simState->mutex);
        simState->backlightValue = value;
        simState->backlightKnown = true;
    }
    if (Logger::instance().debugEnabledNow()) {
        Logger::instance().debug("State update: backlight " + lightLabel(config) + "=" + std::to_string(value));
    }
    requestOutputUpdate();
}

void MappingEngine::outputWorker() {
    while (running && waitForOutputTurn()) {
        pushOutputs();
    }
}

bool MappingEngine::waitForOutputTurn() {
    std::unique_lock lock(outputMutex);
    if (!outputDirty) {
        const std::int64_t deadline = host.now() + refreshNs;
        while (running && !outputDirty && waitBefore(deadline, outputCondition, lock)) {
        }
        if (!running) {
            return false;
        }
        if (!outputDirty) {
            return true;
        }
    }
    const std::int64_t debounceNs = config != nullptr ? config->outputs.debounceMs * nanosecondsPerMs : 0;
    // Every request moves the deadline. A stop ends the wait, but what was asked for still goes out.
    while (debounceNs > 0 && running && waitBefore(lastOutputRequest + debounceNs, outputCondition, lock)) {
    }
    outputDirty = false;
    return true;
}

void MappingEngine::pushOutputs() {
    if (config == nullptr || hid == nullptr || simState == nullptr) {
        return;
    }
    const SimSnapshot state = readState(*simState);
    const bool connected = simConnected;
    // Every board each time: the manager writes no report that the board has already got.
    for (const HidDeviceSummary& board : hid->listDevices()) {
        if (isHeldOff(board.deviceName, board.index)) {
            continue;
        }
        const DeviceEntry* entry = findDeviceEntry(*config, board.deviceName, board.index);
        const OutputProfile* profile = resolveProfile(*config, entry);
        if (profile == nullptr) {
            continue;
        }
        hid->sendLedControl(board.deviceName, board.index,
                            computeLedCommand(*profile, connected, state.batteryKnown, state.batteryOn,
                                              state.backlightKnown, state.backlightValue));
    }
}

void MappingEngine::pauseOutput(const std::string& deviceName, int index) {
    {
        const std::int64_t until = host.now() + pauseNs;
        const std::lock_guard lock(ledPauseMutex);
        std::int64_t& entry = ledPauses[ledPauseKey(deviceName, index)];
        entry = std::max(entry, until);
    }
    if (hid != nullptr) {
        hid->invalidateLedCache(deviceName, index);
    }
}

bool MappingEngine::isHeldOff(const std::string& deviceName, int index) {
    const std::int64_t now = host.now();
    const std::lock_guard lock(ledPauseMutex);
    const auto entry = ledPauses.find(ledPauseKey(deviceName, index));
    if (entry == ledPauses.end()) {
        return false;
    }
    if (now >= entry->second) {
        ledPauses.erase(entry);
        return false;
    }
    return true;
}
