#include "companion/recording/hid_log.h"

#include <gtest/gtest.h>

namespace {

const std::string press = "0100010005000100000000000000000000000000000000000000000000000000";

std::string reportLine(const std::string& time, const std::string& device = "BOARD", const std::string& data = press) {
    return "2026-01-31 " + time + " [DEBUG] HID IN device=" + device + " bytes=" + std::to_string(data.size() / 2) +
           " data=" + data + '\n';
}

/// Reports at these times of the day, one after the other.
std::string reportsAt(const std::vector<std::string>& times) {
    std::string text;
    for (const std::string& time : times) {
        text += reportLine(time);
    }
    return text;
}

/// When the reports came, in milliseconds.
std::vector<long> offsetsOf(const HidLog& log) {
    std::vector<long> offsets;
    for (const HidLogReport& report : log.reports) {
        offsets.push_back(static_cast<long>(report.offset.count()));
    }
    return offsets;
}

} // namespace

TEST(HidLog, TakesBoardAndBytesOfAReport) {
    const HidLog log =
        parseHidLog("2026-01-31 12:00:00 [INFO] Application run loop started\n" + reportLine("12:00:01"));
    ASSERT_EQ(log.reports.size(), 1U);
    EXPECT_EQ(log.reports[0].line, 2U);
    EXPECT_EQ(log.reports[0].device, "BOARD");
    EXPECT_EQ(log.reports[0].bytes.size(), 32U);
    EXPECT_EQ(log.reports[0].bytes[4], 5);
    EXPECT_EQ(log.devices, std::vector<std::string>{"BOARD"});
    EXPECT_EQ(parseHidLog(reportLine("12:00:01", "BOARD", press.substr(2))).reports.at(0).bytes.size(), 31U);
}

TEST(HidLog, LeavesAllOtherLinesAlone) {
    const HidLog log = parseHidLog("2026-01-31 12:00:00 [DEBUG] HID OUT led_ctl device=BOARD bytes=32 data=" + press +
                                   "\n2026-01-31 12:00:00 [DEBUG] HID event from BOARD index=0 type=1\n\nnonsense\n");
    EXPECT_TRUE(log.reports.empty());
    EXPECT_TRUE(log.problems.empty());
    EXPECT_TRUE(log.devices.empty());
}

TEST(HidLog, CountsTimeFromTheFirstReportAndSpreadsThoseOfOneSecond) {
    struct Case {
        std::string text;
        std::vector<long> offsets;
    };
    const Case cases[] = {
        {"", {}},
        {reportsAt({"23:59:58", "23:59:59"}), {0, 1000}},
        {reportLine("23:59:59") + "2026-02-01 00:00:02 [DEBUG] HID IN device=B bytes=1 data=01\n", {0, 3000}},
        {reportsAt({"12:00:00", "12:00:00", "12:00:00", "12:00:00", "12:00:01", "12:00:01"}),
         {0, 250, 500, 750, 1000, 1500}},
        // A clock that is put back takes no time.
        {reportsAt({"12:00:10", "11:00:00", "11:00:02"}), {0, 0, 2000}},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(offsetsOf(parseHidLog(one.text)), one.offsets) << one.text;
    }
}

TEST(HidLog, KeepsTheBoardsInTheOrderOfTheirConnecting) {
    const HidLog log = parseHidLog("2026-01-31 12:00:00 [INFO] HID device connected: ONE index=0\n"
                                   "2026-01-31 12:00:00 [INFO] HID device connected: TWO index=1\n" +
                                   reportLine("12:00:01", "TWO") + reportLine("12:00:02", "THREE"));
    EXPECT_EQ(log.devices, (std::vector<std::string>{"ONE", "TWO", "THREE"}));
}

TEST(HidLog, ReadsLinesOfWindowsAndALastLineWithoutItsEnd) {
    std::string text = reportsAt({"12:00:00", "12:00:01"});
    text.insert(text.find('\n'), "\r");
    text.pop_back();
    const HidLog log = parseHidLog(text);
    EXPECT_EQ(log.reports.size(), 2U);
    EXPECT_TRUE(log.problems.empty());
}

TEST(HidLog, SkipsABadLineAndSaysWhy) {
    const std::string noBeginning = "the line's beginning is missing";
    const std::string badTime = "its time can't be read";
    std::vector<std::pair<std::string, std::string>> cases{
        {"HID IN device=BOARD bytes=1 data=01", noBeginning},
        {"00:00 [DEBUG] HID IN device=BOARD bytes=1 data=01", noBeginning},
        {"2026-01-31 12:00:00 [INFO] HID IN device=BOARD bytes=1 data=01", noBeginning},
        {"2026-01-31 12:00:01 [DEBUG] HID IN device=BO", "the line's end is missing"},
    };
    for (const char* stamp :
         {"2026-13-31 12:00:00", "2026-02-30 12:00:00", "2026-01-31 24:00:00", "2026-01-31 12:60:00",
          "2026-01-31 12:00:61", "2026/01/31 12:00:00", "20x6-01-31 12:00:00", "2026-01-31T12:00:00"}) {
        cases.emplace_back(std::string(stamp) + " [DEBUG] HID IN device=B bytes=1 data=01", badTime);
    }
    for (const auto& [line, problem] : cases) {
        const HidLog log = parseHidLog(reportLine("12:00:00") + line + '\n' + reportLine("12:00:02"));
        EXPECT_EQ(offsetsOf(log), (std::vector<long>{0, 2000})) << line;
        ASSERT_EQ(log.problems.size(), 1U) << line;
        EXPECT_EQ(log.problems[0].line, 2U);
        EXPECT_EQ(log.problems[0].text, problem) << line;
    }
}
