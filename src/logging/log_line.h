#pragma once

#include <optional>
#include <string>
#include <string_view>

/// A line of the log, "2026-01-31 12:00:00 [WARN] message", without the end of the line. Its writer and its reader are
/// side by side, so that the form can only change in one place. Logs that users have kept contain it, so its bytes are
/// fixed.
struct LogLine {
    /// Local time, always of this form.
    std::string time;
    /// "INFO", "WARN", "ERROR" or "DEBUG".
    std::string level;
    std::string message;

    bool operator==(const LogLine&) const = default;
};

std::string logLine(std::string_view time, std::string_view level, std::string_view message);

/// None for a line of another form, such as the second one of a message with two.
std::optional<LogLine> readLogLine(std::string_view text);
