#include "companion/page/event_feed.h"

#include <algorithm>

namespace {

/// How many events a tab that is opened late still gets.
constexpr std::size_t mostKept = 600;

std::string eventText(const std::string& kind, const std::string& json) {
    return "event: " + kind + "\ndata: " + json + "\n\n";
}

} // namespace

void EventFeed::publish(const std::string& kind, const std::string& json) {
    {
        const std::lock_guard lock(mutex);
        happenings.push_back(eventText(kind, json));
        if (happenings.size() > mostKept) {
            happenings.pop_front();
        }
        ++last;
    }
    changed.notify_all();
}

void EventFeed::setState(const std::string& json) {
    {
        const std::lock_guard lock(mutex);
        if (json == state) {
            return;
        }
        state = json;
        ++stateNumber;
    }
    changed.notify_all();
}

void EventFeed::close() {
    {
        const std::lock_guard lock(mutex);
        closed = true;
    }
    changed.notify_all();
}

bool EventFeed::next(Cursor& cursor, std::chrono::milliseconds limit, std::string& events) {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, limit, [&] { return closed || last > cursor.happening || stateNumber > cursor.state; });
    events.clear();
    if (stateNumber > cursor.state) {
        events += eventText("state", state);
        cursor.state = stateNumber;
    }
    const std::uint64_t firstKept = last - happenings.size() + 1;
    for (std::uint64_t number = std::max(cursor.happening + 1, firstKept); number <= last; ++number) {
        events += happenings[number - firstKept];
    }
    cursor.happening = last;
    if (events.empty()) {
        events = ": alive\n\n";
    }
    return !closed;
}
