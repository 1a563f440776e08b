#include "simulation/simulator/simulator_records.h"

#include <utility>

std::string_view simulatorRecordKindName(SimulatorRecordKind kind) {
    switch (kind) {
    case SimulatorRecordKind::Connected:
        return "connected";
    case SimulatorRecordKind::Opened:
        return "opened";
    case SimulatorRecordKind::Closed:
        return "closed";
    case SimulatorRecordKind::Subscribed:
        return "subscribed";
    case SimulatorRecordKind::ClientEvent:
        return "client-event";
    case SimulatorRecordKind::Executed:
        return "executed";
    case SimulatorRecordKind::Dummy:
        return "dummy";
    case SimulatorRecordKind::Command:
        return "command";
    case SimulatorRecordKind::Unchanged:
        return "unchanged";
    case SimulatorRecordKind::Exception:
        return "exception";
    }
    return "unknown";
}

void SimulatorRecords::add(SimulatorRecord record) {
    record.time = std::chrono::steady_clock::now();
    const std::lock_guard lock(mutex);
    if (callback) {
        undelivered.push_back(record);
    }
    records.push_back(std::move(record));
    changed.notify_all();
}

void SimulatorRecords::setSessionCount(std::size_t count) {
    const std::lock_guard lock(mutex);
    sessions = count;
    changed.notify_all();
}

std::vector<SimulatorRecord> SimulatorRecords::all() const {
    const std::lock_guard lock(mutex);
    return records;
}

void SimulatorRecords::clear() {
    const std::lock_guard lock(mutex);
    records.clear();
}

std::size_t SimulatorRecords::sessionCount() const {
    const std::lock_guard lock(mutex);
    return sessions;
}

void SimulatorRecords::setCallback(VirtualSimulator::RecordCallback callback) {
    const std::lock_guard lock(mutex);
    this->callback = std::move(callback);
    undelivered.clear();
}

void SimulatorRecords::deliver() {
    std::unique_lock lock(mutex);
    while (!undelivered.empty()) {
        const SimulatorRecord record = std::move(undelivered.front());
        undelivered.pop_front();
        const VirtualSimulator::RecordCallback current = callback;
        lock.unlock();
        current(record);
        lock.lock();
    }
}

bool SimulatorRecords::waitFor(const VirtualSimulator::RecordPredicate& predicate,
                               std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, timeout, [&] { return predicate(records); });
}

bool SimulatorRecords::waitForSessionCount(std::size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, timeout, [&] { return sessions == count; });
}
