#include "simulation/rig/stream_texts.h"

#include "simulation/rig/log_follower.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

TEST(OutputText, DescribesEachReport) {
    struct Case {
        HidProtocol::Report report;
        const char* text;
    };
    const Case cases[] = {
        {HidProtocol::encodeLedCtl({0, 0, 0, 0, 0}), "led none"},
        {HidProtocol::encodeLedCtl({1, 80, 0, 0, 0}), "led steady 80"},
        {HidProtocol::encodeLedCtl({2, 0, 5, 1000, 50}), "led breathe count=5 period=1000 level=50"},
        {HidProtocol::encodeLedCtl({3, 0, 4, 150, 100}), "led flash count=4 period=150 level=100"},
        {HidProtocol::encodeLedCtl({9, 0, 0, 0, 0}), "led effect 9"},
        {HidProtocol::encodeSimStatus(true), "status connected"},
        {HidProtocol::encodeSimStatus(false), "status disconnected"},
        {HidProtocol::encodeBootsel(), "bootsel"},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(outputText({OutputCall::Write, {one.report.begin(), one.report.end()}}), one.text);
    }
}

TEST(OutputText, ShowsTheBytesOfAReportThatNoBoardUnderstands) {
    EXPECT_EQ(outputText({OutputCall::Write, {0x10, 0x0A}}), "output 100A");
    EXPECT_EQ(outputText({OutputCall::Write, {}}), "output ");
    EXPECT_EQ(outputText({OutputCall::Write, std::vector<std::uint8_t>(32, 0x7F)}).substr(0, 11), "output 7F7F");
}

TEST(RecordText, DescribesEachKind) {
    using Kind = SimulatorRecordKind;
    struct Case {
        Kind kind;
        const char* text;
        std::uint32_t value;
        std::optional<std::string> expected;
    };
    const Case cases[] = {
        {Kind::Connected, "", 0, std::nullopt},
        {Kind::Opened, "X", 0, "opened X"},
        {Kind::Closed, "", 0, "closed"},
        {Kind::Subscribed, "X", 0, "subscribed X"},
        {Kind::ClientEvent, "AP_MASTER", 0, "event AP_MASTER"},
        {Kind::ClientEvent, "AP_MASTER", 3, "event AP_MASTER value=3"},
        {Kind::Executed, "1 (>K:X)", 0, "rpn (>K:X)"},
        {Kind::Executed, "2 (>K:X)", 0, "code 2 (>K:X)"},
        {Kind::Dummy, "MF.DummyCmd", 0, "dummy"},
        {Kind::Command, "MF.Ping", 0, "command MF.Ping"},
        {Kind::Unchanged, "MF.Ping", 0, "unchanged MF.Ping"},
        {Kind::Exception, "", 3, "exception 3"},
    };
    for (const Case& one : cases) {
        SimulatorRecord record;
        record.kind = one.kind;
        record.text = one.text;
        record.value = one.value;
        EXPECT_EQ(recordText(record), one.expected);
    }
}

TEST(LogFollower, GivesCompleteLinesOnce) {
    const TempFolder folder;
    LogFollower follower(folder.path("a.log"));
    EXPECT_TRUE(follower.newLines().empty());
    folder.write("a.log", "2026-01-31 12:00:00 [WARN] One [1] two\n2026-01-31 12:00:00 [INF");
    const auto first = follower.newLines();
    ASSERT_EQ(first.size(), 1U);
    EXPECT_EQ(first[0].level, "WARN");
    EXPECT_EQ(first[0].message, "One [1] two");
    EXPECT_TRUE(follower.newLines().empty());
    folder.write("a.log", "2026-01-31 12:00:00 [WARN] One [1] two\n2026-01-31 12:00:00 [INFO] Three\nmore\n");
    const auto second = follower.newLines();
    ASSERT_EQ(second.size(), 2U);
    EXPECT_EQ(second[0].level, "INFO");
    EXPECT_EQ(second[0].message, "Three");
    EXPECT_EQ(second[1].message, "more");
}

TEST(LogFollower, StartsOverWithANewLog) {
    const TempFolder folder;
    LogFollower follower(folder.path("a.log"));
    folder.write("a.log", "2026-01-31 12:00:00 [INFO] an old line\n2026-01-31 12:00:00 [INFO] half a li");
    EXPECT_EQ(follower.newLines().size(), 1U);
    folder.write("a.log", "2026-01-31 12:00:01 [WARN] a new line\n");
    const std::vector<LogLine> lines = follower.newLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, "WARN");
    EXPECT_EQ(lines[0].message, "a new line");
}
