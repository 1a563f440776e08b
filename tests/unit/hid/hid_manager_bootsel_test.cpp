#include "tests/unit/hid/hid_fixture.h"

namespace {

using HidManagerBootsel = HidTwoBoards;

const std::string report = reportText("1202");
const std::string sentToFirst = "[INFO] BOOTSEL command sent to 0000000000000001 via WriteFile";
const std::string sentToSecond = "[INFO] BOOTSEL command sent to 0000000000000002 via WriteFile";
const std::string nobodyAccepts = "[WARN] No HID device accepted BOOTSEL command";
const std::string firstFails = "[WARN] Failed to send BOOTSEL command to 0000000000000001 ";

} // namespace

TEST_F(HidManagerBootsel, ReachesEveryBoardInTheOrderOfPaths) {
    startWithBoards();
    manager->sendBootselCommand();
    EXPECT_EQ(bus.callTexts(), (Lines{"write port#0001 " + report + ": 32", "write port#0002 " + report + ": 32"}));
    EXPECT_EQ(log.lines(), (Lines{sentToFirst, sentToSecond}));
}

TEST_F(HidManagerBootsel, BoardThatObeysLeavesAtTheNextPass) {
    startWithBoards();
    manager->sendBootselCommand();
    EXPECT_TRUE(first->inBootsel());
    EXPECT_EQ(manager->listDevices().size(), 2U);
    manager->scanDevices();
    EXPECT_FALSE(manager->hasDevices());
}

TEST_F(HidManagerBootsel, FallsBackWhenTheWriteFailsOrIsShort) {
    bus.setFaults(first, {.writeError = 31});
    bus.setFaults(second, {.writeCount = 31});
    startWithBoards();
    manager->sendBootselCommand();
    EXPECT_EQ(bus.callTexts(),
              (Lines{"write port#0001 " + report + ": error 31", "set-output port#0001 " + report + ": ok",
                     "write port#0002 " + report + ": 31", "set-output port#0002 " + report + ": ok"}));
    EXPECT_EQ(log.lines(), (Lines{"[INFO] BOOTSEL command sent to 0000000000000001 via HidD_SetOutputReport",
                                  "[INFO] BOOTSEL command sent to 0000000000000002 via HidD_SetOutputReport"}));
}

TEST_F(HidManagerBootsel, WarnsWithCodesAndCountWhenBothWaysFailAndFinallyWhenNoBoardAccepts) {
    bus.setFaults(first, {.writeError = 31, .setOutputReportError = 87});
    bus.setFaults(second, {.setOutputReportError = 5, .writeCount = 31});
    startWithBoards();
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines(),
              (Lines{firstFails + "(WriteFile err=31, bytes=0, HidD_SetOutputReport err=87)",
                     "[WARN] Failed to send BOOTSEL command to 0000000000000002 (WriteFile err=0, bytes=31, "
                     "HidD_SetOutputReport err=5)",
                     nobodyAccepts}));
    // Each call sends again.
    manager->sendBootselCommand();
    EXPECT_EQ(countCalls(HidCall::Write), 4U);
    EXPECT_EQ(countCalls(HidCall::SetOutputReport), 4U);
}

TEST_F(HidManagerBootsel, OneBoardThatAcceptsIsEnough) {
    startWithBoards();
    bus.setFaults(first, {.writeError = 1, .setOutputReportError = 2});
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines(),
              (Lines{firstFails + "(WriteFile err=1, bytes=0, HidD_SetOutputReport err=2)", sentToSecond}));
    bus.setFaults(first, {});
    bus.setFaults(second, {.writeError = 1, .setOutputReportError = 2});
    bus.plug(second);
    log.clear();
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines().front(), sentToFirst);
    EXPECT_EQ(log.linesWith(nobodyAccepts), Lines());
}

TEST_F(HidManagerBootsel, BoardsWithoutWriteHandleAreSkippedSilently) {
    bus.setFaults(first, noWriteHandle);
    bus.setFaults(second, noWriteHandle);
    startWithBoards();
    manager->sendBootselCommand();
    EXPECT_EQ(bus.callTexts(), Lines());
    EXPECT_EQ(log.lines(), (Lines{nobodyAccepts}));
}

TEST_F(HidManagerBootsel, IsTracedOnceBeforeTheFirstWrite) {
    manager->setTraceEnabled(true);
    startWithBoards();
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines(), (Lines{"[DEBUG] HID OUT device_ctl action=2 data=" + report, sentToFirst, sentToSecond}));
}

TEST_F(HidManagerBootsel, WithoutBoardsThereIsOnlyTheTraceAndTheFinalWarning) {
    manager->setTraceEnabled(true);
    startClean();
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines(), (Lines{"[DEBUG] HID OUT device_ctl action=2 data=" + report, nobodyAccepts}));
}

TEST_F(HidManagerBootsel, LeavesTheCachesAlone) {
    bus.setFaults(first, {.writeError = 31, .setOutputReportError = 87});
    startWithBoards();
    manager->sendSimStatus(true);
    manager->sendLedControl(firstName, 0, {1, 1, 0, 0, 0});
    manager->sendBootselCommand();
    bus.clearCalls();
    manager->sendSimStatus(true);
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, {1, 1, 0, 0, 0}));
    EXPECT_EQ(bus.callTexts(), Lines());
}
