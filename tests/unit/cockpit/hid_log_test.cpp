#include "simulation/cockpit/hid_log.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

const std::string press = "0100010005000100000000000000000000000000000000000000000000000000";

std::string reportLine(const std::string& time, const std::string& device = "BOARD", const std::string& data = press) {
    return "2026-01-31 " + time + " [DEBUG] HID IN device=" + device + " bytes=" + std::to_string(data.size() / 2) +
           " data=" + data + '\n';
}

std::vector<std::chrono::milliseconds> offsetsOf(const HidLog& log) {
    std::vector<std::chrono::milliseconds> offsets;
    for (const HidLogReport& report : log.reports) {
        offsets.push_back(report.offset);
    }
    return offsets;
}

std::string problemOf(const std::string& line) {
    const HidLog log = parseHidLog(line);
    EXPECT_TRUE(log.reports.empty()) << line;
    EXPECT_EQ(log.problems.size(), 1U) << line;
    return log.problems.empty() ? "" : log.problems[0].text;
}

constexpr const char* noBeginning = "the line's beginning is missing";
constexpr const char* badTime = "its time can't be read";

} // namespace

TEST(HidLog, TakesBoardAndBytesOfAReport) {
    const HidLog log =
        parseHidLog("2026-01-31 12:00:00 [INFO] Application run loop started\n" + reportLine("12:00:01"));
    ASSERT_EQ(log.reports.size(), 1U);
    EXPECT_EQ(log.reports[0].line, 2U);
    EXPECT_EQ(log.reports[0].device, "BOARD");
    EXPECT_EQ(log.reports[0].bytes.size(), 32U);
    EXPECT_EQ(log.reports[0].bytes[4], 5);
    EXPECT_EQ(log.reports[0].offset, 0ms);
    EXPECT_EQ(log.devices, std::vector<std::string>{"BOARD"});
    EXPECT_TRUE(log.problems.empty());
}

TEST(HidLog, TakesAReportWithoutItsId) {
    const HidLog log = parseHidLog(reportLine("12:00:01", "BOARD", press.substr(2)));
    ASSERT_EQ(log.reports.size(), 1U);
    EXPECT_EQ(log.reports[0].bytes.size(), 31U);
}

TEST(HidLog, LeavesAllOtherLinesAlone) {
    const HidLog log = parseHidLog("2026-01-31 12:00:00 [DEBUG] HID OUT led_ctl device=BOARD bytes=32 data=" + press +
                                   "\n2026-01-31 12:00:00 [DEBUG] HID event from BOARD index=0 type=1\n\nnonsense\n");
    EXPECT_TRUE(log.reports.empty());
    EXPECT_TRUE(log.problems.empty());
    EXPECT_TRUE(log.devices.empty());
}

TEST(HidLog, IsEmptyForAnEmptyText) {
    const HidLog log = parseHidLog("");
    EXPECT_TRUE(log.reports.empty());
    EXPECT_TRUE(log.problems.empty());
}

TEST(HidLog, CountsTimeFromTheFirstReport) {
    const HidLog log = parseHidLog(reportLine("23:59:58") + reportLine("23:59:59"));
    EXPECT_EQ(offsetsOf(log), (std::vector{0ms, 1000ms}));
}

TEST(HidLog, GoesOnOverMidnightAndTheMonthsEnd) {
    const HidLog log =
        parseHidLog(reportLine("23:59:59") + "2026-02-01 00:00:02 [DEBUG] HID IN device=B bytes=1 data=01\n");
    EXPECT_EQ(offsetsOf(log), (std::vector{0ms, 3000ms}));
}

TEST(HidLog, SpreadsTheReportsOfOneSecondOverIt) {
    const HidLog log = parseHidLog(reportLine("12:00:00") + reportLine("12:00:00") + reportLine("12:00:00") +
                                   reportLine("12:00:00") + reportLine("12:00:01") + reportLine("12:00:01"));
    EXPECT_EQ(offsetsOf(log), (std::vector{0ms, 250ms, 500ms, 750ms, 1000ms, 1500ms}));
}

TEST(HidLog, TakesAClockThatIsPutBackForNoTime) {
    const HidLog log = parseHidLog(reportLine("12:00:10") + reportLine("11:00:00") + reportLine("11:00:02"));
    EXPECT_EQ(offsetsOf(log), (std::vector{0ms, 0ms, 2000ms}));
}

TEST(HidLog, KeepsTheBoardsInTheOrderOfTheirConnecting) {
    const HidLog log = parseHidLog("2026-01-31 12:00:00 [INFO] HID device connected: ONE index=0\n"
                                   "2026-01-31 12:00:00 [INFO] HID device connected: TWO index=1\n" +
                                   reportLine("12:00:01", "TWO") + reportLine("12:00:02", "THREE"));
    EXPECT_EQ(log.devices, (std::vector<std::string>{"ONE", "TWO", "THREE"}));
}

TEST(HidLog, ReadsLinesOfWindowsAndALastLineWithoutItsEnd) {
    std::string text = reportLine("12:00:00");
    text.insert(text.size() - 1, "\r");
    std::string last = reportLine("12:00:01");
    last.pop_back();
    const HidLog log = parseHidLog(text + last);
    EXPECT_EQ(log.reports.size(), 2U);
    EXPECT_TRUE(log.problems.empty());
}

TEST(HidLog, TellsALineWithoutItsBeginning) {
    EXPECT_EQ(problemOf("HID IN device=BOARD bytes=1 data=01\n"), noBeginning);
    EXPECT_EQ(problemOf("00:00 [DEBUG] HID IN device=BOARD bytes=1 data=01\n"), noBeginning);
    EXPECT_EQ(problemOf("2026-01-31 12:00:00 [INFO] HID IN device=BOARD bytes=1 data=01\n"), noBeginning);
}

TEST(HidLog, TellsATimeThatIsNone) {
    for (const char* stamp :
         {"2026-13-31 12:00:00", "2026-02-30 12:00:00", "2026-01-31 24:00:00", "2026-01-31 12:60:00",
          "2026-01-31 12:00:61", "2026/01/31 12:00:00", "20x6-01-31 12:00:00", "2026-01-31T12:00:00"}) {
        EXPECT_EQ(problemOf(std::string(stamp) + " [DEBUG] HID IN device=B bytes=1 data=01"), badTime) << stamp;
    }
}

TEST(HidLog, SkipsABadLineAndKeepsTheOthers) {
    const HidLog log =
        parseHidLog(reportLine("12:00:00") + "2026-01-31 12:00:01 [DEBUG] HID IN device=BO\n" + reportLine("12:00:02"));
    EXPECT_EQ(offsetsOf(log), (std::vector{0ms, 2000ms}));
    ASSERT_EQ(log.problems.size(), 1U);
    EXPECT_EQ(log.problems[0].line, 2U);
    EXPECT_EQ(log.problems[0].text, "the line's end is missing");
}
