#pragma once

#include "mapping/event_decision.h"
#include "mapping/hid_event_queue.h"

#include <cstdint>
#include <string>

/// What the bridge did with an event.
struct EventOutcome {
    /// What `queueRpn` was given for a knob; 0 for anything else.
    std::uint32_t mfAmount = 0;
    bool simEventSent = false;
    bool rpnQueued = false;
};

/// The one debug line that each event ends with. Pure.
std::string eventLine(const QueuedHidEvent& queued, const EventDecision& decision, const EventOutcome& outcome);
