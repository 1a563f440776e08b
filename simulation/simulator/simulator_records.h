#pragma once

#include "simulation/simulator/virtual_simulator.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <vector>

/// What the virtual simulator received, and the threads that wait for it. Has a lock of its own and takes no other
/// under it, so it may be used with or without the simulator's lock.
class SimulatorRecords {
public:
    /// Stamps and keeps a record.
    void add(SimulatorRecord record);
    void setSessionCount(std::size_t count);

    std::vector<SimulatorRecord> all() const;
    void clear();
    std::size_t sessionCount() const;

    void setCallback(VirtualSimulator::RecordCallback callback);
    /// Calls the callback, with no lock held, with all records added since the last call. One thread only.
    void deliver();

    bool waitFor(const VirtualSimulator::RecordPredicate& predicate, std::chrono::milliseconds timeout) const;
    bool waitForSessionCount(std::size_t count, std::chrono::milliseconds timeout) const;

private:
    // Guards everything below.
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    std::vector<SimulatorRecord> records;
    /// Kept only while there is a callback.
    std::deque<SimulatorRecord> undelivered;
    VirtualSimulator::RecordCallback callback;
    std::size_t sessions = 0;
};
