#include "tests/unit/hid/hid_fixture.h"

namespace {

using HidManagerSimStatus = HidTwoBoards;

const std::string connectedReport = reportText("1101");
const std::string disconnectedReport = reportText("1100");

} // namespace

TEST_F(HidManagerSimStatus, FirstOneAndEachChangeAreWrittenToEachBoardInTheOrderOfPaths) {
    bus.plug(first, "z");
    bus.plug(second, "a");
    startClean();
    EXPECT_TRUE(first->outputs().empty());
    for (const bool connected : {false, true, false}) {
        const std::string& report = connected ? connectedReport : disconnectedReport;
        bus.clearCalls();
        manager->sendSimStatus(connected);
        manager->sendSimStatus(connected);
        EXPECT_EQ(bus.callTexts(), (Lines{"write a#0002 " + report + ": 32", "write z#0001 " + report + ": 32"}));
        EXPECT_EQ(first->simConnected(), connected);
    }
}

TEST_F(HidManagerSimStatus, LateBoardGetsTheLastOneAtConnectionAfterItsIdentity) {
    manager->setTraceEnabled(true);
    startClean();
    manager->sendSimStatus(true);
    bus.plug(first);
    manager->scanDevices();
    const auto calls = bus.callTexts();
    ASSERT_GE(calls.size(), 3U);
    EXPECT_EQ(
        Lines(calls.end() - 3, calls.end()),
        (Lines{"feature port#0001 21: failed", "write port#0001 " + connectedReport + ": 32", "reader port#0001: ok"}));
    EXPECT_EQ(log.lines(),
              (Lines{"[INFO] HID device connected: 0000000000000001 index=0",
                     "[DEBUG] HID OUT sim_status device=0000000000000001 bytes=32 data=" + connectedReport}));
    manager->sendSimStatus(false);
    bus.plug(second);
    manager->scanDevices();
    EXPECT_EQ(second->simConnected(), false);
}

TEST_F(HidManagerSimStatus, FailedReplayIsIgnoredButTraced) {
    manager->setTraceEnabled(true);
    manager->sendSimStatus(true);
    bus.setFaults(first, {.writeError = 31});
    bus.plug(first);
    start();
    EXPECT_EQ(log.lines(),
              (Lines{"[INFO] HID device connected: 0000000000000001 index=0",
                     "[DEBUG] HID OUT sim_status device=0000000000000001 bytes=0 data=" + connectedReport}));
}

TEST_F(HidManagerSimStatus, FailedWriteWarnsGoesOnAndIsNotRepeatedAndAShortOneIsNoFailure) {
    manager->setTraceEnabled(true);
    startWithBoards();
    bus.setFaults(first, {.writeError = 1167});
    bus.setFaults(second, {.writeCount = 31});
    manager->sendSimStatus(true);
    EXPECT_EQ(log.lines(),
              (Lines{"[WARN] HID sim_status write failed for 0000000000000001 (err=1167)",
                     "[DEBUG] HID OUT sim_status device=0000000000000001 bytes=0 data=" + connectedReport,
                     "[DEBUG] HID OUT sim_status device=0000000000000002 bytes=31 data=" + connectedReport}));
    bus.setFaults(first, {});
    manager->sendSimStatus(true);
    EXPECT_FALSE(first->simConnected().has_value());
    manager->sendSimStatus(false);
    EXPECT_EQ(first->simConnected(), false);
    EXPECT_EQ(manager->listDevices().size(), 2U);
}

TEST_F(HidManagerSimStatus, BoardWithoutWriteHandleIsSkippedThenAndAtConnection) {
    bus.setFaults(first, noWriteHandle);
    startWithBoards();
    manager->sendSimStatus(true);
    EXPECT_EQ(bus.callTexts(), (Lines{"write port#0002 " + connectedReport + ": 32"}));
    bus.plug(first);
    manager->scanDevices();
    EXPECT_EQ(manager->listDevices().size(), 2U);
    EXPECT_TRUE(first->outputs().empty());
}
