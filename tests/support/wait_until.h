#pragma once

#include <chrono>
#include <thread>

/// Polls until `condition` holds; false when it doesn't within a bound that no healthy run comes near.
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds bound = std::chrono::milliseconds(30000),
               std::chrono::milliseconds pause = std::chrono::milliseconds(1)) {
    const auto end = std::chrono::steady_clock::now() + bound;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(pause);
    }
    return true;
}
