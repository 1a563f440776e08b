#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>

/// What the page receives, as server-sent events: a state, of which only the latest counts, and a sequence of events,
/// of which a late listener gets the last few hundred. Any thread may call any operation.
class EventFeed {
public:
    /// What a listener has received so far.
    struct Cursor {
        std::uint64_t happening = 0;
        std::uint64_t state = 0;
    };

    /// One line of JSON each.
    void publish(const std::string& kind, const std::string& json);
    /// Sends the state only if it differs from the last one.
    void setState(const std::string& json);
    /// Ends all waits, now and later.
    void close();

    /// The events that came since, waiting for one no longer than the limit, then a comment that keeps the connection
    /// alive. False once closed.
    bool next(Cursor& cursor, std::chrono::milliseconds limit, std::string& events);

private:
    std::mutex mutex;
    std::condition_variable changed;
    // Guarded by the mutex.
    std::deque<std::string> happenings;
    /// The number of the last event, from 1; the first kept one is `last - size + 1`.
    std::uint64_t last = 0;
    std::string state;
    std::uint64_t stateNumber = 0;
    bool closed = false;
};
