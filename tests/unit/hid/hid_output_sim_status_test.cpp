#include "tests/unit/hid/hid_fixture.h"

namespace {

using HidOutputSimStatus = HidTwoBoards;

const std::string connectedReport = reportText("1101");
const std::string disconnectedReport = reportText("1100");

} // namespace

TEST_F(HidOutputSimStatus, RepeatedStatusIsWrittenOnceToEachBoard) {
    startWithBoards();
    manager->sendSimStatus(true);
    manager->sendSimStatus(true);
    EXPECT_EQ(bus.callTexts(),
              (Lines{"write port#0001 " + connectedReport + ": 32", "write port#0002 " + connectedReport + ": 32"}));
    EXPECT_EQ(first->simConnected(), true);
    EXPECT_EQ(second->simConnected(), true);
}

TEST_F(HidOutputSimStatus, EachChangeIsWritten) {
    startWithBoards();
    for (const bool connected : {true, false, true}) {
        manager->sendSimStatus(connected);
    }
    EXPECT_EQ(first->outputs().size(), 3U);
    EXPECT_EQ(second->outputs().size(), 3U);
}

TEST_F(HidOutputSimStatus, FirstStatusIsWrittenEvenWhenFalse) {
    startWithBoards();
    manager->sendSimStatus(false);
    EXPECT_EQ(bus.callTexts(), (Lines{"write port#0001 " + disconnectedReport + ": 32",
                                      "write port#0002 " + disconnectedReport + ": 32"}));
}

TEST_F(HidOutputSimStatus, WritesInTheOrderOfPaths) {
    bus.plug(first, "z");
    bus.plug(second, "a");
    start();
    bus.clearCalls();
    manager->sendSimStatus(true);
    EXPECT_EQ(bus.callTexts(),
              (Lines{"write a#0002 " + connectedReport + ": 32", "write z#0001 " + connectedReport + ": 32"}));
}

TEST_F(HidOutputSimStatus, WithoutBoardsItIsOnlyKept) {
    start();
    log.clear();
    bus.clearCalls();
    manager->sendSimStatus(true);
    EXPECT_EQ(bus.callTexts(), Lines());
    EXPECT_EQ(log.lines(), Lines());
    bus.plug(first);
    manager->scanDevices();
    EXPECT_EQ(first->simConnected(), true);
}

TEST_F(HidOutputSimStatus, BoardConnectedBeforeAnyStatusGetsNone) {
    startWithBoards();
    EXPECT_TRUE(first->outputs().empty());
    EXPECT_TRUE(second->outputs().empty());
}

TEST_F(HidOutputSimStatus, LateBoardGetsItAtConnectionAfterItsIdentity) {
    start();
    manager->sendSimStatus(true);
    bus.clearCalls();
    bus.plug(first);
    manager->scanDevices();
    const auto calls = bus.callTexts();
    ASSERT_GE(calls.size(), 3U);
    EXPECT_EQ(
        Lines(calls.end() - 3, calls.end()),
        (Lines{"feature port#0001 21: failed", "write port#0001 " + connectedReport + ": 32", "reader port#0001: ok"}));
}

TEST_F(HidOutputSimStatus, LateBoardIsToldFalseToo) {
    start();
    manager->sendSimStatus(true);
    manager->sendSimStatus(false);
    bus.plug(first);
    manager->scanDevices();
    EXPECT_EQ(first->simConnected(), false);
}

TEST_F(HidOutputSimStatus, LateBoardWithoutWriteHandleIsSkipped) {
    start();
    manager->sendSimStatus(true);
    bus.setFaults(first, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous}}});
    bus.plug(first);
    manager->scanDevices();
    EXPECT_TRUE(manager->hasDevices());
    EXPECT_TRUE(first->outputs().empty());
}

TEST_F(HidOutputSimStatus, FailedReplayIsIgnoredButTraced) {
    manager->setTraceEnabled(true);
    start();
    manager->sendSimStatus(true);
    bus.setFaults(first, {.writeError = 31});
    bus.plug(first);
    log.clear();
    manager->scanDevices();
    EXPECT_EQ(log.lines(),
              (Lines{"[INFO] HID device connected: 0000000000000001 index=0",
                     "[DEBUG] HID OUT sim_status device=0000000000000001 bytes=0 data=" + connectedReport}));
}

TEST_F(HidOutputSimStatus, FailedWriteWarnsGoesOnAndIsNotRepeated) {
    startWithBoards();
    bus.setFaults(first, {.writeError = 1167});
    manager->sendSimStatus(true);
    EXPECT_EQ(log.lines(), (Lines{"[WARN] HID sim_status write failed for 0000000000000001 (err=1167)"}));
    EXPECT_EQ(second->simConnected(), true);
    bus.setFaults(first, {});
    manager->sendSimStatus(true);
    EXPECT_FALSE(first->simConnected().has_value());
    manager->sendSimStatus(false);
    EXPECT_EQ(first->simConnected(), false);
    EXPECT_EQ(manager->listDevices().size(), 2U);
}

TEST_F(HidOutputSimStatus, ShortWriteIsNoFailure) {
    startWithBoards();
    bus.setFaults(first, {.writeCount = 31});
    manager->sendSimStatus(true);
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(HidOutputSimStatus, BoardWithoutWriteHandleIsSkipped) {
    bus.setFaults(first, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous}}});
    startWithBoards();
    manager->sendSimStatus(true);
    EXPECT_EQ(bus.callTexts(), (Lines{"write port#0002 " + connectedReport + ": 32"}));
}

TEST_F(HidOutputSimStatus, IsTracedWithTheCountOfTheCall) {
    manager->setTraceEnabled(true);
    startWithBoards();
    bus.setFaults(first, {.writeCount = 31});
    manager->sendSimStatus(true);
    EXPECT_EQ(log.lines(),
              (Lines{"[DEBUG] HID OUT sim_status device=0000000000000001 bytes=31 data=" + connectedReport,
                     "[DEBUG] HID OUT sim_status device=0000000000000002 bytes=32 data=" + connectedReport}));
}

TEST_F(HidOutputSimStatus, FailedWriteIsTracedBehindItsWarning) {
    manager->setTraceEnabled(true);
    startWithBoards();
    bus.setFaults(second, {.writeError = 5});
    manager->sendSimStatus(false);
    EXPECT_EQ(log.lines(),
              (Lines{"[DEBUG] HID OUT sim_status device=0000000000000001 bytes=32 data=" + disconnectedReport,
                     "[WARN] HID sim_status write failed for 0000000000000002 (err=5)",
                     "[DEBUG] HID OUT sim_status device=0000000000000002 bytes=0 data=" + disconnectedReport}));
}

TEST_F(HidOutputSimStatus, ReplayIsTracedAfterTheConnectionIsAnnounced) {
    manager->setTraceEnabled(true);
    start();
    manager->sendSimStatus(true);
    log.clear();
    bus.plug(first);
    manager->scanDevices();
    EXPECT_EQ(log.lines(),
              (Lines{"[INFO] HID device connected: 0000000000000001 index=0",
                     "[DEBUG] HID OUT sim_status device=0000000000000001 bytes=32 data=" + connectedReport}));
}

TEST_F(HidOutputSimStatus, StatusSentBeforeStartReachesTheFirstBoards) {
    manager->sendSimStatus(true);
    startWithBoards();
    EXPECT_EQ(first->simConnected(), true);
    EXPECT_EQ(second->simConnected(), true);
}
