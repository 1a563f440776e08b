#pragma once

#include "tests/support/wait_until.h"

#include <atomic>

/// Blocks each thread that comes to it until it is opened.
class Gate {
public:
    void pass() {
        ++arrivals;
        isOpen.wait(false);
    }
    bool waitForArrival() const {
        return waitUntil([this] { return arrivals > 0; });
    }
    void open() {
        isOpen = true;
        isOpen.notify_all();
    }

private:
    std::atomic<int> arrivals{0};
    std::atomic<bool> isOpen{false};
};
