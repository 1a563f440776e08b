#pragma once

#include "tests/support/wait_until.h"

#include <atomic>
#include <condition_variable>
#include <mutex>

/// Blocks each thread that comes to it until it is opened. Not by waiting on an atomic: the standard library for
/// Windows sometimes loses the wake-up.
class Gate {
public:
    void pass() {
        ++arrivals;
        std::unique_lock lock(mutex);
        opened.wait(lock, [this] { return isOpen; });
    }
    bool waitForArrival() const {
        return waitUntil([this] { return arrivals > 0; });
    }
    void open() {
        const std::lock_guard lock(mutex);
        isOpen = true;
        opened.notify_all();
    }

private:
    std::atomic<int> arrivals{0};
    std::mutex mutex;
    std::condition_variable opened;
    bool isOpen = false;
};
