#include "simulation/cockpit/hid_log.h"

#include "hid/hid_protocol.h"
#include "simulation/scenarios/scenario_line.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace {

constexpr std::string_view reportMark = "HID IN device=";
constexpr std::string_view countMark = " bytes=";
constexpr std::string_view dataMark = " data=";
constexpr std::string_view connectedMark = "] HID device connected: ";
constexpr std::string_view indexMark = " index=";
constexpr std::string_view levelAndMark = " [DEBUG] HID IN device=";
/// "2026-01-31 12:00:00".
constexpr std::size_t stampSize = 19;

using Seconds = std::chrono::sys_seconds;

/// The fields of a line, or why it has none.
struct ReportLine {
    Seconds time;
    std::string device;
    std::vector<std::uint8_t> bytes;
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

ReportLine problem(std::string text) {
    ReportLine line;
    line.problem = std::move(text);
    return line;
}

/// A board's name may hold anything, so that the fields behind it are found from the line's end.
ReportLine parseReportLine(std::string_view text) {
    if (text.size() < stampSize || text.substr(stampSize, levelAndMark.size()) != levelAndMark) {
        return problem("the line's beginning is missing");
    }
    const auto time = parseStamp(text.substr(0, stampSize));
    if (!time) {
        return problem("its time can't be read");
    }
    const std::size_t begin = stampSize + levelAndMark.size();
    const std::size_t data = text.rfind(dataMark);
    const std::size_t count = data == std::string_view::npos ? data : text.rfind(countMark, data);
    if (count == std::string_view::npos || count < begin) {
        return problem("the line's end is missing");
    }
    const auto bytes = bytesFromHex(text.substr(data + dataMark.size()));
    const std::size_t countBegin = count + countMark.size();
    const auto size = wholeNumber(text.substr(countBegin, data - countBegin), 1, HidProtocol::reportSize);
    if (!bytes || !size || bytes->size() != static_cast<std::size_t>(*size)) {
        return problem("its bytes aren't as many as it says");
    }
    return {*time, std::string(text.substr(begin, count - begin)), *bytes, ""};
}

void addDevice(HidLog& log, const std::string& device) {
    if (std::ranges::find(log.devices, device) == log.devices.end()) {
        log.devices.push_back(device);
    }
}

/// In the order of their connecting, the boards get the numbers that they had.
void noteConnection(HidLog& log, std::string_view text) {
    const std::size_t mark = text.find(connectedMark);
    const std::size_t end = text.rfind(indexMark);
    if (mark != std::string_view::npos && end != std::string_view::npos && end > mark + connectedMark.size()) {
        const std::size_t begin = mark + connectedMark.size();
        addDevice(log, std::string(text.substr(begin, end - begin)));
    }
}

/// Goes through the lines and keeps the time of each report.
class LogReader {
public:
    void take(std::size_t number, std::string_view text) {
        if (text.find(reportMark) == std::string_view::npos) {
            noteConnection(log, text);
            return;
        }
        ReportLine line = parseReportLine(text);
        if (!line.problem.empty()) {
            log.problems.push_back({number, line.problem});
            return;
        }
        addDevice(log, line.device);
        times.push_back(line.time);
        log.reports.push_back({number, {}, std::move(line.device), std::move(line.bytes)});
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
                // A clock that was put back costs no time.
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
