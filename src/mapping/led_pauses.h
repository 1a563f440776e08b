#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

/// The boards whose lights the bridge leaves alone for a moment, because the firmware shows something of its own. Time
/// is an argument in nanoseconds. Has no lock of its own.
class LedPauses {
public:
    static constexpr std::int64_t pauseNs = 1'500'000'000;

    /// Pauses a board until `pauseNs` after `now`; never shortens a pause. A board is identified by its name, one
    /// without a name by its index.
    void pause(const std::string& deviceName, int index, std::int64_t now);

    /// Whether the board is paused. Removes a pause that is over.
    bool isPaused(const std::string& deviceName, int index, std::int64_t now);

private:
    /// Device key to the time at which the pause is over.
    std::unordered_map<std::string, std::int64_t> ends;
};
