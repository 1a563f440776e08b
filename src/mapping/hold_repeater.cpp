#include "mapping/hold_repeater.h"

#include "logging/logger.h"
#include "mapping/timed_wait.h"

#include <thread>

HoldRepeater::HoldRepeater(const Host& host, const MappingContext& context) : host(host), context(context) {}

bool HoldRepeater::start(std::string& error) {
    return worker.start(
        host, [this] { run(); }, "", error);
}

void HoldRepeater::requestStop() {
    worker.requestStop();
    const std::lock_guard lock(mutex);
    condition.notify_all();
}

void HoldRepeater::clear() {
    const std::lock_guard lock(mutex);
    holds.clear();
}

void HoldRepeater::startHold(const std::string& key, const std::string& controlName, const std::string& role,
                             const std::string& command) {
    const std::lock_guard lock(mutex);
    holds.start(key, controlName, role, command, host.now(), periodNs());
    condition.notify_one();
}

void HoldRepeater::stopHold(const std::string& key) {
    const std::lock_guard lock(mutex);
    holds.stop(key);
    condition.notify_one();
}

void HoldRepeater::run() {
    while (worker.running()) {
        std::unique_lock lock(mutex);
        const std::int64_t period = periodNs();
        const std::int64_t deadline = host.now() + period;
        // With a hold in the table there is no wait at all: polling keeps the pace more evenly than timers do.
        while (worker.running() && holds.empty() && waitBefore(host, deadline, condition, lock)) {
        }
        if (!worker.running()) {
            return;
        }
        const std::vector<DueHold> due = holds.takeDue(host.now(), period);
        lock.unlock();
        sendDue(due);
        // Not a sleep. It gives the event worker a chance to get the mutex, which this loop would otherwise take again
        // at once, for many milliseconds in a row.
        std::this_thread::yield();
    }
}

void HoldRepeater::sendDue(const std::vector<DueHold>& due) {
    for (const auto& [key, command] : due) {
        // A release that came during the earlier sends ends the hold right away.
        if (!isHeld(key)) {
            continue;
        }
        std::string error;
        if (!context.mobiflight->sendRpnNow(command, error)) {
            logWarn("Managed map hold send failed: " + error);
        }
    }
}

bool HoldRepeater::isHeld(const std::string& key) {
    const std::lock_guard lock(mutex);
    return holds.contains(key);
}

std::int64_t HoldRepeater::periodNs() const {
    return holdPeriodNs(context.config != nullptr ? context.config->mobiflight.mapHoldRepeatMs : 0);
}
