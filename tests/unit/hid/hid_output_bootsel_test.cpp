#include "tests/unit/hid/hid_fixture.h"

namespace {

using HidOutputBootsel = HidTwoBoards;

const std::string report = reportText("1202");

} // namespace

TEST_F(HidOutputBootsel, ReachesEveryBoardInTheOrderOfPaths) {
    startWithBoards();
    manager->sendBootselCommand();
    EXPECT_EQ(bus.callTexts(), (Lines{"write port#0001 " + report + ": 32", "write port#0002 " + report + ": 32"}));
    EXPECT_EQ(log.lines(), (Lines{"[INFO] BOOTSEL command sent to 0000000000000001 via WriteFile",
                                  "[INFO] BOOTSEL command sent to 0000000000000002 via WriteFile"}));
}

TEST_F(HidOutputBootsel, BoardThatObeysLeavesAtTheNextPass) {
    startWithBoards();
    manager->sendBootselCommand();
    EXPECT_TRUE(first->inBootsel());
    EXPECT_EQ(manager->listDevices().size(), 2U);
    log.clear();
    manager->scanDevices();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001",
                                  "[INFO] HID device disconnected: 0000000000000002"}));
}

TEST_F(HidOutputBootsel, WithoutBoardsOnlyTheFinalWarning) {
    start();
    log.clear();
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines(), (Lines{"[WARN] No HID device accepted BOOTSEL command"}));
}

TEST_F(HidOutputBootsel, FallsBackWhenTheWriteFails) {
    startWithBoards();
    bus.setFaults(first, {.writeError = 31});
    manager->sendBootselCommand();
    EXPECT_EQ(bus.callTexts(),
              (Lines{"write port#0001 " + report + ": error 31", "set-output port#0001 " + report + ": ok",
                     "write port#0002 " + report + ": 32"}));
    EXPECT_EQ(log.lines(), (Lines{"[INFO] BOOTSEL command sent to 0000000000000001 via HidD_SetOutputReport",
                                  "[INFO] BOOTSEL command sent to 0000000000000002 via WriteFile"}));
    EXPECT_TRUE(first->inBootsel());
}

TEST_F(HidOutputBootsel, ShortWriteCountsAsAFailure) {
    startWithBoards();
    bus.setFaults(first, {.writeCount = 31});
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines()[0], "[INFO] BOOTSEL command sent to 0000000000000001 via HidD_SetOutputReport");
    EXPECT_EQ(first->outputs().size(), 2U);
}

TEST_F(HidOutputBootsel, WarnsWithBothCodesWhenBothWaysFail) {
    startWithBoards();
    bus.setFaults(first, {.writeError = 31, .setOutputReportError = 87});
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines(), (Lines{"[WARN] Failed to send BOOTSEL command to 0000000000000001 (WriteFile err=31, "
                                  "bytes=0, HidD_SetOutputReport err=87)",
                                  "[INFO] BOOTSEL command sent to 0000000000000002 via WriteFile"}));
}

TEST_F(HidOutputBootsel, WarningTellsTheShortCount) {
    startWithBoards();
    bus.setFaults(second, {.setOutputReportError = 87, .writeCount = 31});
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] BOOTSEL command sent to 0000000000000001 via WriteFile",
                                  "[WARN] Failed to send BOOTSEL command to 0000000000000002 (WriteFile err=0, "
                                  "bytes=31, HidD_SetOutputReport err=87)"}));
}

TEST_F(HidOutputBootsel, WarnsFinallyWhenNoBoardAccepts) {
    startWithBoards();
    bus.setFaults(first, {.writeError = 1, .setOutputReportError = 2});
    bus.setFaults(second, {.writeError = 3, .setOutputReportError = 4});
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines(), (Lines{"[WARN] Failed to send BOOTSEL command to 0000000000000001 (WriteFile err=1, "
                                  "bytes=0, HidD_SetOutputReport err=2)",
                                  "[WARN] Failed to send BOOTSEL command to 0000000000000002 (WriteFile err=3, "
                                  "bytes=0, HidD_SetOutputReport err=4)",
                                  "[WARN] No HID device accepted BOOTSEL command"}));
}

TEST_F(HidOutputBootsel, LastBoardAloneCountsAsAccepted) {
    startWithBoards();
    bus.setFaults(first, {.writeError = 1, .setOutputReportError = 2});
    manager->sendBootselCommand();
    EXPECT_EQ(log.linesWith("No HID device"), Lines());
}

TEST_F(HidOutputBootsel, BoardsWithoutWriteHandleAreSkippedSilently) {
    bus.setFaults(first, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous}}});
    bus.setFaults(second, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous}}});
    startWithBoards();
    manager->sendBootselCommand();
    EXPECT_EQ(bus.callTexts(), Lines());
    EXPECT_EQ(log.lines(), (Lines{"[WARN] No HID device accepted BOOTSEL command"}));
}

TEST_F(HidOutputBootsel, EachCallSendsAgain) {
    startWithBoards();
    bus.setFaults(first, {.writeError = 31, .setOutputReportError = 87});
    bus.setFaults(second, {.writeError = 31, .setOutputReportError = 87});
    manager->sendBootselCommand();
    manager->sendBootselCommand();
    EXPECT_EQ(callsOf(HidCall::Write).size(), 4U);
    EXPECT_EQ(callsOf(HidCall::SetOutputReport).size(), 4U);
}

TEST_F(HidOutputBootsel, IsTracedOnceBeforeTheFirstWrite) {
    manager->setTraceEnabled(true);
    startWithBoards();
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines(), (Lines{"[DEBUG] HID OUT device_ctl action=2 data=" + report,
                                  "[INFO] BOOTSEL command sent to 0000000000000001 via WriteFile",
                                  "[INFO] BOOTSEL command sent to 0000000000000002 via WriteFile"}));
}

TEST_F(HidOutputBootsel, IsTracedEvenWithoutBoards) {
    manager->setTraceEnabled(true);
    start();
    log.clear();
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines(), (Lines{"[DEBUG] HID OUT device_ctl action=2 data=" + report,
                                  "[WARN] No HID device accepted BOOTSEL command"}));
}

TEST_F(HidOutputBootsel, PulledBoardFailsBothWays) {
    startWithBoards();
    bus.unplug(first);
    bus.unplug(second);
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines().front(), "[WARN] Failed to send BOOTSEL command to 0000000000000001 (WriteFile err=1167, "
                                   "bytes=0, HidD_SetOutputReport err=1167)");
    EXPECT_EQ(log.lines().back(), "[WARN] No HID device accepted BOOTSEL command");
}

TEST_F(HidOutputBootsel, LeavesTheCachesAlone) {
    startWithBoards();
    manager->sendSimStatus(true);
    EXPECT_TRUE(manager->sendLedControl("0000000000000001", 0, {1, 1, 0, 0, 0}));
    bus.setFaults(first, {.writeError = 31, .setOutputReportError = 87});
    manager->sendBootselCommand();
    bus.setFaults(first, {});
    bus.clearCalls();
    manager->sendSimStatus(true);
    EXPECT_TRUE(manager->sendLedControl("0000000000000001", 0, {1, 1, 0, 0, 0}));
    EXPECT_EQ(bus.callTexts(), Lines());
}
