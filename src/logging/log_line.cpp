#include "logging/log_line.h"

namespace {

constexpr std::string_view logTimeForm = "2026-01-31 12:00:00";
constexpr std::string_view beforeLevel = " [";
constexpr std::string_view afterLevel = "] ";

} // namespace

std::string logLine(std::string_view time, std::string_view level, std::string_view message) {
    std::string text;
    // With room for the line feed that the log adds.
    text.reserve(time.size() + beforeLevel.size() + level.size() + afterLevel.size() + message.size() + 1);
    text.append(time).append(beforeLevel).append(level).append(afterLevel).append(message);
    return text;
}

std::optional<LogLine> readLogLine(std::string_view text) {
    const std::string_view time = text.substr(0, logTimeForm.size());
    text.remove_prefix(time.size());
    if (!text.starts_with(beforeLevel)) {
        return std::nullopt;
    }
    text.remove_prefix(beforeLevel.size());
    const std::size_t levelEnd = text.find(afterLevel);
    if (levelEnd == std::string_view::npos) {
        return std::nullopt;
    }
    return LogLine{std::string(time), std::string(text.substr(0, levelEnd)),
                   std::string(text.substr(levelEnd + afterLevel.size()))};
}
