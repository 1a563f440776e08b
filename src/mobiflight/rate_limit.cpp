#include "mobiflight/rate_limit.h"

#include <algorithm>

void RateLimit::noteSend(std::int64_t now) {
    lastSendAt = now;
    hasLastSend = true;
}

std::chrono::milliseconds RateLimit::delay(std::int32_t limitMs, std::int64_t now) const {
    if (limitMs < 1 || !hasLastSend) {
        return std::chrono::milliseconds(0);
    }
    // The elapsed time in whole milliseconds, truncated: the wait is never too short.
    const auto elapsed =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::nanoseconds(now - lastSendAt));
    return std::max(std::chrono::milliseconds(limitMs) - elapsed, std::chrono::milliseconds(0));
}
