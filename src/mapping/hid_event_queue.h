#pragma once

#include "hid/hid_protocol.h"

#include <cstdint>
#include <deque>
#include <string>

/// A board's event on its way to the event worker.
struct QueuedHidEvent {
    HidProtocol::HidEvent event;
    std::string deviceName;
    std::uint32_t index = 0;
};

/// The events that wait, oldest first, without limit. Has no lock of its own.
class HidEventQueue {
public:
    /// Appends an event. A button's release first removes the queued hold repeats of the same button on the same board:
    /// the button is up, and the repeats would act after that. Everything else keeps its place.
    void push(QueuedHidEvent entry);

    /// Removes the oldest event. The queue must not be empty.
    QueuedHidEvent pop();

    bool empty() const { return events.empty(); }

private:
    std::deque<QueuedHidEvent> events;
};
