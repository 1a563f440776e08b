#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// One "HID IN" line of a trace log.
struct HidLogReport {
    std::size_t line = 0;
    /// Since the log's first report. A log has whole seconds; the reports of one second are spread evenly over it.
    std::chrono::milliseconds offset{0};
    /// The board's name in the log.
    std::string device;
    std::vector<std::uint8_t> bytes;
};

/// A line that looks like a report but isn't valid.
struct HidLogProblem {
    std::size_t line = 0;
    std::string text;
};

struct HidLog {
    std::vector<HidLogReport> reports;
    std::vector<HidLogProblem> problems;
    /// The boards in the order in which the log first names them.
    std::vector<std::string> devices;
};

HidLog parseHidLog(std::string_view text);
