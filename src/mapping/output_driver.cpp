#include "mapping/output_driver.h"

#include "logging/logger.h"
#include "mapping/output_state.h"
#include "mapping/timed_wait.h"
#include "text/backlight_variable.h"

#include <optional>

namespace {

constexpr std::int64_t refreshNs = 1'000'000'000;

/// What the log calls the cockpit light: the standard variable by its name, another one as the configuration writes it.
std::string lightLabel(const AppConfig* config) {
    const bool isStandard = config == nullptr || config->extensions.lightVariable == ExtensionsConfig().lightVariable;
    return isStandard ? std::string(backlightVariable) : config->extensions.lightVariable;
}

// Takes the lock twice, not once: the simulator sends battery and backlight in separate messages, so no pair of them is
// more right than another, and a change between the two has requested a push of its own.
LightState readState(SharedSimState& state) {
    LightState snapshot;
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

OutputDriver::OutputDriver(const Host& host, const MappingContext& context, const std::atomic<bool>& simConnected)
    : host(host), context(context), simConnected(simConnected) {}

bool OutputDriver::start(std::string& error) {
    return worker.start(
        host, [this] { run(); }, "", error);
}

void OutputDriver::requestStop() {
    worker.requestStop();
    const std::lock_guard lock(mutex);
    condition.notify_all();
}

void OutputDriver::requestUpdate() {
    const std::lock_guard lock(mutex);
    isRequested = true;
    lastRequest = host.now();
    condition.notify_one();
}

void OutputDriver::onBacklightPayload(const std::string& text) {
    double value = 0.0;
    if (!parseBacklightPayload(text, value)) {
        if (text.find(backlightVariable) != std::string::npos) {
            logWarn("Backlight LVar payload received but could not be parsed: " + text);
        }
        return;
    }
    if (context.simState != nullptr) {
        const std::lock_guard lock(context.simState->mutex);
        context.simState->backlightValue = value;
        context.simState->backlightKnown = true;
    }
    if (Logger::instance().debugEnabledNow()) {
        Logger::instance().debug("State update: backlight " + lightLabel(context.config) + "=" + std::to_string(value));
    }
    requestUpdate();
}

void OutputDriver::run() {
    while (worker.running() && waitForTurn()) {
        push();
    }
}

bool OutputDriver::waitForTurn() {
    std::unique_lock lock(mutex);
    if (!isRequested) {
        const std::int64_t deadline = host.now() + refreshNs;
        while (worker.running() && !isRequested && waitBefore(host, deadline, condition, lock)) {
        }
        if (!worker.running()) {
            return false;
        }
        if (!isRequested) {
            return true;
        }
    }
    const std::int64_t debounceNs =
        context.config != nullptr ? context.config->outputs.debounceMs * nanosecondsPerMs : 0;
    // Every request moves the deadline. A stop ends the wait, but what was requested is still pushed.
    while (debounceNs > 0 && worker.running() && waitBefore(host, lastRequest + debounceNs, condition, lock)) {
    }
    isRequested = false;
    return true;
}

void OutputDriver::push() {
    if (context.config == nullptr || context.hid == nullptr || context.simState == nullptr) {
        return;
    }
    LightState state = readState(*context.simState);
    state.simConnected = simConnected;
    // Every board each time: the manager doesn't write a report that equals the board's last one.
    for (const HidDeviceSummary& board : context.hid->listDevices()) {
        if (isPaused(board.deviceName, board.index)) {
            continue;
        }
        const std::optional<LedCommand> command =
            boardLedCommand(*context.config, board.deviceName, board.index, state);
        if (command) {
            context.hid->sendLedControl(board.deviceName, board.index, *command);
        }
    }
}

void OutputDriver::pause(const std::string& deviceName, int index) {
    {
        const std::int64_t now = host.now();
        const std::lock_guard lock(pauseMutex);
        pauses.pause(deviceName, index, now);
    }
    // The firmware now shows something of its own. Without the cache, the board gets its state again after the pause,
    // even if that hasn't changed.
    if (context.hid != nullptr) {
        context.hid->invalidateLedCache(deviceName, index);
    }
}

bool OutputDriver::isPaused(const std::string& deviceName, int index) {
    const std::int64_t now = host.now();
    const std::lock_guard lock(pauseMutex);
    return pauses.isPaused(deviceName, index, now);
}
