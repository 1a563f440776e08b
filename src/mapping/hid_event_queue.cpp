#include "mapping/hid_event_queue.h"

#include <utility>

using HidProtocol::HidEventAction;

void HidEventQueue::push(QueuedHidEvent entry) {
    if (HidProtocol::classify(entry.event) == HidEventAction::ButtonRelease) {
        std::erase_if(events, [&entry](const QueuedHidEvent& queued) {
            return queued.event.controlId == entry.event.controlId && queued.index == entry.index &&
                   HidProtocol::classify(queued.event) == HidEventAction::Hold && queued.deviceName == entry.deviceName;
        });
    }
    events.push_back(std::move(entry));
}

QueuedHidEvent HidEventQueue::pop() {
    QueuedHidEvent oldest = std::move(events.front());
    events.pop_front();
    return oldest;
}
