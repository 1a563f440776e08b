#pragma once

#include "companion/live/bridge_configuration.h"
#include "companion/live/live_boards.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

/// Writes what boards do as a scenario, which docs/scenarios.md specifies: bit by bit, as it happens, so that a record
/// is whole up to where it was cut. It holds the configuration too and plays anywhere. Each text ends with a line break
/// or is empty. Times are a monotonic clock's nanoseconds. Pure.
class RecordText {
public:
    /// The record begins at `begin`.
    RecordText(const BridgeConfiguration& configuration, std::int64_t begin);

    /// The texts of config.json and of the command file.
    std::string header(std::string_view config, std::string_view buttons) const;

    std::string arrived(const LiveBoard& board, std::int64_t now);
    std::string left(const LiveBoard& board, std::int64_t now);
    std::string reported(const LiveReport& report);

private:
    /// `vid=1234 pid=ABCD`.
    std::string ids;
    /// The controls' names by their numbers, as far as a scenario can hold them.
    std::map<std::int32_t, std::string> controls;
    /// What the record calls each board.
    std::map<std::string, std::string> words;
    /// How far the waits have come.
    std::int64_t written;

    std::string waitUntil(std::int64_t time);
    std::string declare(const std::string& name);
    std::string controlWord(std::uint16_t number) const;
};
