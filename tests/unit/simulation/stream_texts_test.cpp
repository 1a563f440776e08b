#include "simulation/rig/stream_texts.h"

#include "simulation/rig/log_follower.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

namespace {

BoardOutput outputOf(const HidProtocol::Report& report) {
    return {OutputCall::Write, {report.begin(), report.end()}};
}

SimulatorRecord recordOf(SimulatorRecordKind kind, const std::string& text = "", std::uint32_t value = 0) {
    SimulatorRecord record;
    record.kind = kind;
    record.text = text;
    record.value = value;
    return record;
}

} // namespace

TEST(OutputText, WordsEachReport) {
    EXPECT_EQ(outputText(outputOf(HidProtocol::encodeLedCtl({0, 0, 0, 0, 0}))), "led none");
    EXPECT_EQ(outputText(outputOf(HidProtocol::encodeLedCtl({1, 80, 0, 0, 0}))), "led steady 80");
    EXPECT_EQ(outputText(outputOf(HidProtocol::encodeLedCtl({2, 0, 5, 1000, 50}))),
              "led breathe count=5 period=1000 level=50");
    EXPECT_EQ(outputText(outputOf(HidProtocol::encodeLedCtl({3, 0, 4, 150, 100}))),
              "led flash count=4 period=150 level=100");
    EXPECT_EQ(outputText(outputOf(HidProtocol::encodeLedCtl({9, 0, 0, 0, 0}))), "led effect 9");
    EXPECT_EQ(outputText(outputOf(HidProtocol::encodeSimStatus(true))), "status connected");
    EXPECT_EQ(outputText(outputOf(HidProtocol::encodeSimStatus(false))), "status disconnected");
    EXPECT_EQ(outputText(outputOf(HidProtocol::encodeBootsel())), "bootsel");
}

TEST(OutputText, ShowsTheBytesOfAReportThatNoBoardUnderstands) {
    EXPECT_EQ(outputText({OutputCall::Write, {0x10, 0x0A}}), "output 100A");
    EXPECT_EQ(outputText({OutputCall::Write, {}}), "output ");
    EXPECT_EQ(outputText({OutputCall::Write, std::vector<std::uint8_t>(32, 0x7F)}).substr(0, 11), "output 7F7F");
}

TEST(RecordText, WordsEachKind) {
    EXPECT_EQ(recordText(recordOf(SimulatorRecordKind::Connected)), std::nullopt);
    EXPECT_EQ(recordText(recordOf(SimulatorRecordKind::Opened, "X")), "opened X");
    EXPECT_EQ(recordText(recordOf(SimulatorRecordKind::Closed)), "closed");
    EXPECT_EQ(recordText(recordOf(SimulatorRecordKind::Subscribed, "X")), "subscribed X");
    EXPECT_EQ(recordText(recordOf(SimulatorRecordKind::ClientEvent, "AP_MASTER")), "event AP_MASTER");
    EXPECT_EQ(recordText(recordOf(SimulatorRecordKind::ClientEvent, "AP_MASTER", 3)), "event AP_MASTER value=3");
    EXPECT_EQ(recordText(recordOf(SimulatorRecordKind::Executed, "1 (>K:X)")), "rpn (>K:X)");
    EXPECT_EQ(recordText(recordOf(SimulatorRecordKind::Executed, "2 (>K:X)")), "code 2 (>K:X)");
    EXPECT_EQ(recordText(recordOf(SimulatorRecordKind::Dummy, "MF.DummyCmd")), "dummy");
    EXPECT_EQ(recordText(recordOf(SimulatorRecordKind::Command, "MF.Ping")), "command MF.Ping");
    EXPECT_EQ(recordText(recordOf(SimulatorRecordKind::Unchanged, "MF.Ping")), "unchanged MF.Ping");
    EXPECT_EQ(recordText(recordOf(SimulatorRecordKind::Exception, "", 3)), "exception 3");
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

TEST(LogFollower, BeginsAnewWhenTheLogDoes) {
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
