#include "simulation/rig/stream_texts.h"

#include "simulation/rig/log_follower.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

// The scenarios show the usual texts.
TEST(OutputText, ShowsTheNumberOfAnUnknownEffectAndTheBytesOfAnUnknownReport) {
    const HidProtocol::Report unknown = HidProtocol::encodeLedCtl({9, 0, 0, 0, 0});
    EXPECT_EQ(outputText({OutputCall::Write, {unknown.begin(), unknown.end()}}), "led effect 9");
    EXPECT_EQ(outputText({OutputCall::Write, {0x10, 0x0A}}), "output 100A");
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
        {Kind::Closed, "", 0, "closed"},
        {Kind::Subscribed, "X", 0, "subscribed X"},
        {Kind::ClientEvent, "AP_MASTER", 3, "event AP_MASTER value=3"},
        {Kind::Executed, "1 (>K:X)", 0, "rpn (>K:X)"},
        {Kind::Executed, "2 (>K:X)", 0, "code 2 (>K:X)"},
        {Kind::Unchanged, "MF.Ping", 0, "unchanged MF.Ping"},
        {Kind::Exception, "", 3, "exception 3"},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(recordText({one.kind, {}, 1, one.text, one.value, 0, 0}), one.expected);
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
