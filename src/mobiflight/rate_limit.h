#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

/// Keeps the commands that the worker sends apart. Spaces queue entries: neither the repeats of one encoder entry nor
/// the caller of `sendRpnNow` waits for it, though what they send counts. Never reset, so it spans sessions. Has no
/// clock: times are the monotonic clock's nanoseconds.
///
/// Any thread may call it without a lock: a time that another thread is just replacing only changes one delay.
class RateLimit {
public:
    /// A command other than the dummy was written at that time.
    void noteSend(std::int64_t now);

    /// How long to wait before the next command, with `limitMs` between two; a limit below 1 is none.
    std::chrono::milliseconds delay(std::int32_t limitMs, std::int64_t now) const;

private:
    std::atomic<std::int64_t> lastSendAt{0};
    std::atomic<bool> hasLastSend{false};
};
