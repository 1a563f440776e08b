#pragma once

#include <mutex>

/// The last known state of the simulator. A `...Known` flag stays false until the first value has arrived; values
/// survive the end of a session.
struct SharedSimState {
    /// Guards all members below; nothing is called under it.
    std::mutex mutex;
    bool batteryKnown = false;
    bool batteryOn = false;
    bool backlightKnown = false;
    double backlightValue = 0.0;
    // Complete the record. The lights follow `MappingEngine::simConnected`, which changes with these.
    bool connectedKnown = false;
    bool connected = false;
};
