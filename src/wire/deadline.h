#pragma once

#include <chrono>

/// Whole milliseconds until the deadline, for the system's waits. Rounded up, so that a wait never ends too early; 0
/// once it has passed.
inline int millisecondsLeft(std::chrono::steady_clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}
