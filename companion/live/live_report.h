#pragma once

#include "companion/live/decoded_event.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A report that a board has sent.
struct LiveReport {
    /// When it was read, by a monotonic clock in nanoseconds.
    std::int64_t time = 0;
    /// The board's name as the bridge logs it, and its number in order of connection.
    std::string board;
    int index = -1;
    /// At least one.
    std::vector<std::uint8_t> bytes;
    /// None: the bridge ignores the report; `problem` says why.
    std::optional<DecodedEvent> event;
    std::string problem;
};

/// Fills `event` or `problem` from the rest. Pure.
void decodeReport(LiveReport& report, const BridgeConfiguration& configuration);
