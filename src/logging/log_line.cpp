#include "logging/log_line.h"

namespace {

constexpr std::string_view logTimeForm = "2026-01-31 12:00:00";
constexpr std::string_view beforeLevel = " [";
constexpr std::string_view afterLevel = "] ";

} // namespace

std::string logLine(const LogLine& line) {
    std::string text = line.time;
    text += beforeLevel;
    text += line.level;
    text += afterLevel;
    text += line.message;
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
