#pragma once

#include "companion/setup/process_control.h"

#include <cstdint>
#include <optional>
#include <vector>

/// A bridge that runs.
struct RunningBridge {
    std::int64_t process = 0;
    /// The simulator is its parent. False, too, where the system doesn't say, as on Linux of a bridge in Wine.
    bool isOfSimulator = false;

    bool operator==(const RunningBridge&) const = default;
};

/// The bridge among the processes; of several, one that the simulator started. Pure.
std::optional<RunningBridge> findBridge(const std::vector<ProcessFacts>& processes);
