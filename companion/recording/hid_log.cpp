#include "companion/recording/hid_log.h"

#include "hid/hid_log_lines.h"
#include "logging/log_line.h"
#include "simulation/scenarios/scenario_line.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace {

using Seconds = std::chrono::sys_seconds;

/// A report and when it came, or why the line has none.
struct TimedReport {
    Seconds time;
    HidReportLine report;
    std::string problem;
};

std::optional<int> digits(std::string_view stamp, std::size_t begin, std::size_t count, int most) {
    const auto number = wholeNumber(stamp.substr(begin, count), 0, most);
    return number ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

std::optional<Seconds> parseStamp(std::string_view stamp) {
    constexpr std::string_view form = "dddd-dd-dd dd:dd:dd";
    for (std::size_t i = 0; i < form.size(); ++i) {
        const bool isDigit = stamp[i] >= '0' && stamp[i] <= '9';
        if (form[i] == 'd' ? !isDigit : stamp[i] != form[i]) {
            return std::nullopt;
        }
    }
    const auto date = std::chrono::year(*digits(stamp, 0, 4, 9999)) /
                      std::chrono::month(static_cast<unsigned>(*digits(stamp, 5, 2, 99))) /
                      std::chrono::day(static_cast<unsigned>(*digits(stamp, 8, 2, 99)));
    const auto hours = digits(stamp, 11, 2, 23);
    const auto minutes = digits(stamp, 14, 2, 59);
    const auto seconds = digits(stamp, 17, 2, 60);
    if (!date.ok() || !hours || !minutes || !seconds) {
        return std::nullopt;
    }
    return std::chrono::sys_days(date) + std::chrono::hours(*hours) + std::chrono::minutes(*minutes) +
           std::chrono::seconds(*seconds);
}

TimedReport readReport(std::string_view text) {
    TimedReport read;
    const std::optional<LogLine> line = readLogLine(text);
    if (!line || line->level != "DEBUG" || !line->message.starts_with(hidReportMark)) {
        read.problem = "the line's beginning is missing";
        return read;
    }
    const auto time = parseStamp(line->time);
    if (!time) {
        read.problem = "its time can't be read";
        return read;
    }
    read.time = *time;
    read.report = readHidReportLine(line->message, read.problem).value_or(HidReportLine());
    return read;
}

void addDevice(HidLog& log, const std::string& device) {
    if (std::ranges::find(log.devices, device) == log.devices.end()) {
        log.devices.push_back(device);
    }
}

/// Boards are numbered in the order in which they connected.
void noteConnection(HidLog& log, std::string_view text) {
    if (const auto connection = readHidConnectionLine(text)) {
        addDevice(log, std::string(connection->device));
    }
}

/// Goes through the lines and keeps the time of each report.
class LogReader {
public:
    void take(std::size_t number, std::string_view text) {
        if (text.find(hidReportMark) == std::string_view::npos) {
            noteConnection(log, text);
            return;
        }
        TimedReport read = readReport(text);
        if (!read.problem.empty()) {
            log.problems.push_back({number, read.problem});
            return;
        }
        addDevice(log, read.report.device);
        times.push_back(read.time);
        log.reports.push_back({number, {}, std::move(read.report.device), std::move(read.report.bytes)});
    }

    HidLog finish() {
        std::chrono::seconds elapsed{0};
        for (std::size_t begin = 0; begin < times.size();) {
            std::size_t end = begin + 1;
            while (end < times.size() && times[end] == times[begin]) {
                ++end;
            }
            spread(begin, end, elapsed);
            if (end < times.size()) {
                // A clock that was set back adds no time.
                elapsed += std::max(times[end] - times[begin], std::chrono::seconds(0));
            }
            begin = end;
        }
        return std::move(log);
    }

private:
    HidLog log;
    std::vector<Seconds> times;

    void spread(std::size_t begin, std::size_t end, std::chrono::seconds second) {
        const auto count = static_cast<std::chrono::milliseconds::rep>(end - begin);
        for (std::size_t i = begin; i < end; ++i) {
            const auto place = static_cast<std::chrono::milliseconds::rep>(i - begin);
            log.reports[i].offset = second + std::chrono::milliseconds(1000 * place / count);
        }
    }
};

} // namespace

HidLog parseHidLog(std::string_view text) {
    LogReader reader;
    std::size_t number = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        reader.take(++number, line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return reader.finish();
}
