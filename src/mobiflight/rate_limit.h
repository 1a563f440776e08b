#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

/// Keeps a minimum time between the queue entries that the worker sends. The repeats of one encoder entry and the
/// caller of `sendRpnNow` don't wait for it, but what they send delays the next entry. Never reset, so it spans
/// sessions. Has no clock: times are the monotonic clock's nanoseconds.
///
/// Any thread may call it without a lock: reading a time while another thread replaces it only changes one delay.
class RateLimit {
public:
    /// A command other than the dummy was written at that time.
    void noteSend(std::int64_t now);

    /// How long to wait before the next command, with `limitMs` between two; below 1 there is no limit.
    std::chrono::milliseconds delay(std::int32_t limitMs, std::int64_t now) const;

private:
    std::atomic<std::int64_t> lastSendAt{0};
    std::atomic<bool> hasLastSend{false};
};
