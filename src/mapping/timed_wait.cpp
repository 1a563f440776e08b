#include "mapping/timed_wait.h"

#include <chrono>

bool waitBefore(const Host& host, std::int64_t deadline, std::condition_variable& condition,
                std::unique_lock<std::mutex>& lock) {
    const std::int64_t remaining = deadline - host.now();
    if (remaining <= 0) {
        return false;
    }
    condition.wait_for(lock, std::chrono::nanoseconds(remaining));
    return true;
}
