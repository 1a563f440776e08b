#include "tests/unit/hid/hid_fixture.h"

namespace {

constexpr char firstName[] = "0000000000000001";
constexpr char secondName[] = "0000000000000002";
constexpr LedCommand steady{1, 0x80, 0, 0, 0};
constexpr LedCommand flash{3, 0, 4, 500, 200};

using HidOutputLed = HidTwoBoards;

} // namespace

TEST_F(HidOutputLed, WritesToTheNamedBoardAlone) {
    startWithBoards();
    EXPECT_TRUE(manager->sendLedControl(secondName, 1, flash));
    EXPECT_EQ(bus.callTexts(), (Lines{"write port#0002 " + reportText("10030004F401C8") + ": 32"}));
    EXPECT_EQ(second->led(), flash);
    EXPECT_FALSE(first->led().has_value());
}

TEST_F(HidOutputLed, NameWinsOverAStaleIndex) {
    startWithBoards();
    EXPECT_TRUE(manager->sendLedControl(firstName, 1, steady));
    EXPECT_EQ(first->led(), steady);
    EXPECT_FALSE(second->led().has_value());
}

TEST_F(HidOutputLed, UnknownNameFallsBackToTheIndex) {
    startWithBoards();
    EXPECT_TRUE(manager->sendLedControl("elsewhere", 1, steady));
    EXPECT_EQ(second->led(), steady);
}

TEST_F(HidOutputLed, EmptyNameGoesByTheIndex) {
    startWithBoards();
    EXPECT_TRUE(manager->sendLedControl("", 0, steady));
    EXPECT_EQ(first->led(), steady);
}

TEST_F(HidOutputLed, UnknownNameAndNoIndexIsFalse) {
    startWithBoards();
    EXPECT_FALSE(manager->sendLedControl("elsewhere", -1, steady));
    EXPECT_FALSE(manager->sendLedControl("", -1, steady));
    EXPECT_FALSE(manager->sendLedControl("elsewhere", 2, steady));
    EXPECT_EQ(bus.callTexts(), Lines());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(HidOutputLed, NameIsComparedByteForByte) {
    auto model = VirtualBoardModel();
    model.boardId = HidProtocol::BoardId{0, 0, 0, 0, 0, 0, 0, 0xAB};
    bus.plug(std::make_shared<VirtualBoard>(model));
    start();
    EXPECT_TRUE(manager->sendLedControl("00000000000000AB", -1, steady));
    EXPECT_FALSE(manager->sendLedControl("00000000000000ab", -1, steady));
    EXPECT_FALSE(manager->sendLedControl("00000000000000AB ", -1, steady));
}

TEST_F(HidOutputLed, OfTwoBoardsWithOneNameTheFirstPathIsMeant) {
    const auto twin = makeBoard(1);
    bus.plug(first, "z");
    bus.plug(twin, "a");
    start();
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_EQ(twin->led(), steady);
    EXPECT_FALSE(first->led().has_value());
}

TEST_F(HidOutputLed, NoBoardsIsFalse) {
    start();
    EXPECT_FALSE(manager->sendLedControl(firstName, 0, steady));
}

TEST_F(HidOutputLed, EqualCommandIsWrittenOnceAndTrueTwice) {
    startWithBoards();
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_EQ(first->outputs().size(), 1U);
}

TEST_F(HidOutputLed, FirstCommandIsWrittenEvenWhenAllZero) {
    startWithBoards();
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, {}));
    EXPECT_EQ(first->led(), LedCommand());
}

TEST_F(HidOutputLed, EveryFieldCountsAsAChange) {
    startWithBoards();
    const std::vector<LedCommand> commands{{0, 0, 0, 0, 0}, {1, 0, 0, 0, 0},     {1, 1, 0, 0, 0},    {1, 1, 1, 0, 0},
                                           {1, 1, 1, 1, 0}, {1, 1, 1, 0x101, 0}, {1, 1, 1, 0x101, 1}};
    for (const auto& command : commands) {
        EXPECT_TRUE(manager->sendLedControl(firstName, 0, command));
        EXPECT_EQ(first->led(), command);
    }
    EXPECT_EQ(first->outputs().size(), commands.size());
}

TEST_F(HidOutputLed, OtherBoardsCacheIsLeftAlone) {
    startWithBoards();
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_TRUE(manager->sendLedControl(secondName, 1, flash));
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_TRUE(manager->sendLedControl(secondName, 1, steady));
    EXPECT_EQ(first->outputs().size(), 1U);
    EXPECT_EQ(second->outputs().size(), 2U);
}

TEST_F(HidOutputLed, InvalidatedCacheHasAnEqualCommandWritten) {
    startWithBoards();
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    manager->invalidateLedCache(firstName, -1);
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_EQ(first->outputs().size(), 2U);
}

TEST_F(HidOutputLed, InvalidationFallsBackToTheIndexAndLeavesOthersAlone) {
    startWithBoards();
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_TRUE(manager->sendLedControl(secondName, 1, steady));
    manager->invalidateLedCache("elsewhere", 1);
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_TRUE(manager->sendLedControl(secondName, 1, steady));
    EXPECT_EQ(first->outputs().size(), 1U);
    EXPECT_EQ(second->outputs().size(), 2U);
}

TEST_F(HidOutputLed, InvalidationOfNoBoardDoesNothing) {
    startWithBoards();
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    bus.clearCalls();
    manager->invalidateLedCache("elsewhere", -1);
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_EQ(bus.callTexts(), Lines());
}

TEST_F(HidOutputLed, FailedWriteWarnsIsTrueAndIsNotRepeated) {
    startWithBoards();
    bus.setFaults(first, {.writeError = 31});
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_EQ(log.lines(), (Lines{"[WARN] HID led_ctl write failed for 0000000000000001 (err=31)"}));
    bus.setFaults(first, {});
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_FALSE(first->led().has_value());
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, flash));
    EXPECT_EQ(first->led(), flash);
}

TEST_F(HidOutputLed, FailedWriteIsRepeatedAfterInvalidation) {
    startWithBoards();
    bus.setFaults(first, {.writeError = 31});
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    bus.setFaults(first, {});
    manager->invalidateLedCache(firstName, 0);
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_EQ(first->led(), steady);
}

TEST_F(HidOutputLed, ShortWriteIsNoFailure) {
    startWithBoards();
    bus.setFaults(first, {.writeCount = 31});
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(HidOutputLed, BoardWithoutWriteHandleIsFalse) {
    bus.setFaults(first, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous}}});
    startWithBoards();
    EXPECT_FALSE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_EQ(bus.callTexts(), Lines());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(HidOutputLed, PulledBoardIsWrittenToUntilAPassFindsItGone) {
    startWithBoards();
    bus.unplug(first);
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_EQ(log.lines(), (Lines{"[WARN] HID led_ctl write failed for 0000000000000001 (err=1167)"}));
    manager->scanDevices();
    EXPECT_FALSE(manager->sendLedControl(firstName, 0, steady));
}

TEST_F(HidOutputLed, ReplugForgetsTheCache) {
    startWithBoards();
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    bus.plug(first);
    manager->scanDevices();
    EXPECT_FALSE(first->led().has_value());
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_EQ(first->led(), steady);
}

TEST_F(HidOutputLed, LightIsNotReplayedAtConnection) {
    startWithBoards();
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    const auto third = plugNew(3);
    manager->scanDevices();
    EXPECT_TRUE(third->outputs().empty());
}

TEST_F(HidOutputLed, IsTracedOnlyWhenWritten) {
    manager->setTraceEnabled(true);
    startWithBoards();
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, flash));
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, flash));
    EXPECT_EQ(log.lines(),
              (Lines{"[DEBUG] HID OUT led_ctl device=0000000000000001 bytes=32 data=" + reportText("10030004F401C8")}));
}

TEST_F(HidOutputLed, FailedWriteIsTracedWithCountZero) {
    manager->setTraceEnabled(true);
    startWithBoards();
    bus.setFaults(first, {.writeError = 31});
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, steady));
    EXPECT_EQ(log.lines(),
              (Lines{"[WARN] HID led_ctl write failed for 0000000000000001 (err=31)",
                     "[DEBUG] HID OUT led_ctl device=0000000000000001 bytes=0 data=" + reportText("100180")}));
}
