#include "logging/logger.h"
#include "mapping/mapping_engine.h"

using HidProtocol::HidEventAction;

namespace {

/// The period of a configuration that is missing or names none.
constexpr std::int32_t defaultHoldRepeatMs = 10;

/// A button on two boards, or on one board in another mode, makes holds of their own.
std::string holdKey(const std::string& deviceName, int index, std::uint16_t controlId, const std::string& role) {
    return deviceName + "|" + std::to_string(index) + "|" + std::to_string(controlId) + "|" + role;
}

} // namespace

std::int64_t MappingEngine::holdRepeatNs() const {
    const std::int32_t configured = config != nullptr ? config->mobiflight.mapHoldRepeatMs : 0;
    return (configured < 1 ? defaultHoldRepeatMs : configured) * nanosecondsPerMs;
}

void MappingEngine::handleManagedMapEvent(HidEventAction actionType, const HidProtocol::HidEvent& event,
                                          const std::string& deviceName, int index, const std::string& controlName,
                                          const std::string& role) {
    const std::string key = holdKey(deviceName, index, event.controlId, role);
    if (actionType == HidEventAction::ButtonRelease) {
        stopHold(key);
        cancelControlCommands(controlName, role);
        return;
    }
    const std::string pressCommand = buttons->lookup(controlName, "PRESS", role);
    if (actionType == HidEventAction::ButtonPress) {
        stopHold(key);
        sendMapPress(controlName, pressCommand);
        return;
    }
    const std::string holdCommand = buttons->lookup(controlName, "HOLD", role);
    const std::string& command = holdCommand.empty() ? pressCommand : holdCommand;
    if (!command.empty()) {
        startHold(key, controlName, role, command);
    }
}

void MappingEngine::sendMapPress(const std::string& controlName, const std::string& command) {
    std::string error;
    if (!command.empty() && !mobiflight->sendRpnNow(command, error)) {
        logWarn("Managed map press send failed for " + controlName + ": " + error);
    }
}

void MappingEngine::startHold(const std::string& key, const std::string& controlName, const std::string& role,
                              const std::string& command) {
    const std::lock_guard lock(holdMutex);
    ManagedMapHold& hold = activeHolds[key];
    hold.controlName = controlName;
    hold.role = role;
    hold.command = command;
    // A board repeats the hold as it likes; that must not postpone the next send.
    if (hold.nextDue == 0) {
        hold.nextDue = host.now() + holdRepeatNs();
    }
    holdCondition.notify_one();
}

void MappingEngine::stopHold(const std::string& key) {
    if (key.empty()) {
        return;
    }
    const std::lock_guard lock(holdMutex);
    activeHolds.erase(key);
    holdCondition.notify_one();
}

void MappingEngine::cancelControlCommands(const std::string& controlName, const std::string& role) {
    if (config == nullptr || !config->mobiflight.enabled || buttons == nullptr || mobiflight == nullptr) {
        return;
    }
    for (const char* action : {"HOLD", "PRESS"}) {
        const std::string command = buttons->lookup(controlName, action, role);
        if (!command.empty()) {
            mobiflight->cancelRpn(command);
        }
    }
}

void MappingEngine::holdWorker() {
    while (running) {
        std::unique_lock lock(holdMutex);
        const std::int64_t repeatNs = holdRepeatNs();
        const std::int64_t deadline = host.now() + repeatNs;
        // With a hold in the table there is no wait at all: the pace comes from polling, not from timers.
        while (running && activeHolds.empty() && waitBefore(deadline, holdCondition, lock)) {
        }
        if (!running) {
            return;
        }
        const auto due = takeDueHolds(repeatNs);
        lock.unlock();
        sendDueHolds(due);
        // No sleep, only the chance for the event worker to get the mutex, which it could else wait many milliseconds
        // for beside a loop that takes it again at once.
        std::this_thread::yield();
    }
}

std::vector<std::pair<std::string, std::string>> MappingEngine::takeDueHolds(std::int64_t repeatNs) {
    std::vector<std::pair<std::string, std::string>> due;
    const std::int64_t now = host.now();
    for (auto& [key, hold] : activeHolds) {
        if (now >= hold.nextDue) {
            due.emplace_back(key, hold.command);
            hold.nextDue = now + repeatNs;
        }
    }
    return due;
}

void MappingEngine::sendDueHolds(const std::vector<std::pair<std::string, std::string>>& due) {
    for (const auto& [key, command] : due) {
        {
            const std::lock_guard lock(holdMutex);
            if (!activeHolds.contains(key)) {
                continue;
            }
        }
        std::string error;
        if (!mobiflight->sendRpnNow(command, error)) {
            logWarn("Managed map hold send failed: " + error);
        }
    }
}
