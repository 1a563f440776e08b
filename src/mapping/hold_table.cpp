#include "mapping/hold_table.h"

#include "mapping/timed_wait.h"

namespace {

constexpr std::int32_t defaultPeriodMs = 10;

} // namespace

std::string holdKey(const std::string& deviceName, int index, std::uint16_t controlId, const std::string& role) {
    return deviceName + "|" + std::to_string(index) + "|" + std::to_string(controlId) + "|" + role;
}

std::int64_t holdPeriodNs(std::int32_t configuredMs) {
    return (configuredMs < 1 ? defaultPeriodMs : configuredMs) * nanosecondsPerMs;
}

void HoldTable::start(const std::string& key, const std::string& controlName, const std::string& role,
                      const std::string& command, std::int64_t now, std::int64_t period) {
    ManagedMapHold& hold = holds[key];
    hold.controlName = controlName;
    hold.role = role;
    hold.command = command;
    if (hold.nextDue == 0) {
        hold.nextDue = now + period;
    }
}

std::vector<DueHold> HoldTable::takeDue(std::int64_t now, std::int64_t period) {
    std::vector<DueHold> due;
    for (auto& [key, hold] : holds) {
        if (now >= hold.nextDue) {
            due.push_back({key, hold.command});
            hold.nextDue = now + period;
        }
    }
    return due;
}
