#pragma once

#include "companion/live/decoded_event.h"
#include "companion/live/live_boards.h"

#include <cstdint>
#include <string>

/// "press", "clockwise 3, speed 4", or "type 7, value 1" for an event without an action.
std::string actionText(const DecodedEvent& decoded);

/// "AP (5)", or only the number where the event map has no name.
std::string controlText(const DecodedEvent& decoded);

/// What the bridge does with the event: "sends (>K:AP_MASTER)", or "sends nothing: " and why.
std::string answerText(const DecodedEvent& decoded);

/// "board E66138A1B2C3D4E5 is there, role PFD", with a line break.
std::string arrivalText(const LiveBoard& board);

/// The report in one line, with seconds since `begin`, a time of the same clock. `raw`: with its bytes in a second one.
/// Each ends with a line break.
std::string reportText(const LiveReport& report, std::int64_t begin, bool raw);
