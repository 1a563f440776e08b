#pragma once

#include "wire/simconnect_open.h"

#include <algorithm>
#include <chrono>

/// How long the bridge's waits really last. The bridge waits for a board, for the simulator's process and after a
/// refused session; each of these waits takes a second or more. All shorter ones (between two polls of a session, two
/// scans or two commands) are part of what a person watches or a scenario compares.
struct Pace {
    /// Waits of this length or longer are limited; the bridge gets each shorter one in full.
    std::chrono::milliseconds longWait;
    /// The most that a long wait lasts.
    std::chrono::milliseconds limit;
    SimConnectOpenLimits openLimits;

    /// For a person who watches: the bridge's own pace, except for waits of many seconds.
    static constexpr Pace real() { return {std::chrono::seconds(1), std::chrono::seconds(1), {}}; }
    /// For tests: no long waits, and an answer that a busy machine delays doesn't come too late.
    static constexpr Pace fast() {
        return {std::chrono::seconds(1), std::chrono::milliseconds(10), {std::chrono::seconds(30)}};
    }

    /// How long a wait of `wait` that the bridge requests really lasts.
    constexpr std::chrono::milliseconds apply(std::chrono::milliseconds wait) const {
        return wait < longWait ? wait : std::min(wait, limit);
    }
};
