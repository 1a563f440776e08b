#pragma once

#include <chrono>
#include <functional>

/// Asks until the condition holds, every other millisecond. False when it doesn't within the limit; it is asked at
/// least once.
bool pollUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit);
