#pragma once

#include <chrono>
#include <functional>

/// Checks the condition every 2 milliseconds until it is true. False when it isn't within the limit. Checks at least
/// once.
bool pollUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit);
