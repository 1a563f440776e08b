#pragma once

#include "platform/platform.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>

constexpr std::int64_t nanosecondsPerMs = 1'000'000;

/// Waits once on the condition, at most until `deadline` (nanoseconds of the host's monotonic clock). False, without
/// waiting, once that has passed. The caller checks what it waits for and calls again: a wake-up may be spurious, and a
/// clock that a test sets may be behind the real one.
bool waitBefore(const Host& host, std::int64_t deadline, std::condition_variable& condition,
                std::unique_lock<std::mutex>& lock);
