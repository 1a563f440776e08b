#pragma once

#include "hid/hid_protocol.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The log lines that tools read back, each with its writer and its reader, so that a line can only change in one place.
// The bridge writes them; the replay of a trace, the scenario player and the page read them. Logs that users have kept
// contain them too, so their bytes are fixed.
//
// Writers make the log's message, without time and level. Readers skip what precedes it in the line, and return none
// for any other line. Names come from boards and configuration files: a reader misreads a name that contains another
// field's mark, such as a role with "(" in it.

/// "HID device connected: BOARD index=0": the place in which a board was found.
struct HidConnectionLine {
    std::string_view device;
    int index = -1;

    bool operator==(const HidConnectionLine&) const = default;
};
std::string hidConnectionLine(const HidConnectionLine& line);
/// The result points into `line`.
std::optional<HidConnectionLine> readHidConnectionLine(std::string_view line);

/// What each line of a received report begins with.
constexpr std::string_view hidReportMark = "HID IN device=";

/// "HID IN device=BOARD bytes=2 data=0100": a report exactly as the board sent it.
struct HidReportLine {
    std::string device;
    std::vector<std::uint8_t> bytes;

    bool operator==(const HidReportLine&) const = default;
};
std::string hidReportLine(std::string_view device, std::span<const std::uint8_t> bytes);
/// None with the reason in `error` for a line that lacks something, as the last line of a log that was cut does.
std::optional<HidReportLine> readHidReportLine(std::string_view line, std::string& error);

/// "HID event from BOARD index=0 type=1 …": an event of a board and what the bridge did with it.
struct HidEventLine {
    std::string_view device;
    /// As in the line of the board's connection; -1: unknown.
    int index = -1;
    /// The line leaves out its header byte and its trailer word.
    HidProtocol::HidEvent event;
    // Empty: the line has no such field.
    std::string_view action;
    std::string_view role;
    std::string_view configuredRole;
    std::string_view typeName;
    std::string_view controlName;
    /// How often the command was queued; 0: the line has no such field.
    std::uint32_t amount = 0;
    bool fast = false;
    bool simEventSent = false;
    bool rpnQueued = false;

    bool operator==(const HidEventLine&) const = default;
};
std::string hidEventLine(const HidEventLine& line);
/// The result points into `line`.
std::optional<HidEventLine> readHidEventLine(std::string_view line);
