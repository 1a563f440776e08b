#include "tests/unit/hid/hid_fixture.h"

namespace {

using HidManagerBootsel = HidTwoBoards;

const std::string report = reportText("1202");
const std::string nobodyAccepts = "[WARN] No HID device accepted BOOTSEL command";

} // namespace

TEST_F(HidManagerBootsel, IsTracedOnceAndReachesEveryBoardInTheOrderOfPaths) {
    manager->setTraceEnabled(true);
    startWithBoards();
    manager->sendBootselCommand();
    EXPECT_EQ(bus.callTexts(), (Lines{"write port#0001 " + report + ": 32", "write port#0002 " + report + ": 32"}));
    EXPECT_EQ(log.lines(), (Lines{"[DEBUG] HID OUT device_ctl action=2 data=" + report,
                                  "[INFO] BOOTSEL command sent to 0000000000000001 via WriteFile",
                                  "[INFO] BOOTSEL command sent to 0000000000000002 via WriteFile"}));
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

TEST_F(HidManagerBootsel, WarnsOfEachBoardThatRefusesBothAndFinallyWhenNoneAccepts) {
    bus.setFaults(first, {.writeError = 31, .setOutputReportError = 87});
    bus.setFaults(second, {.setOutputReportError = 5, .writeCount = 31});
    startWithBoards();
    manager->sendBootselCommand();
    EXPECT_EQ(log.lines(), (Lines{"[WARN] Failed to send BOOTSEL command to 0000000000000001 (WriteFile err=31, "
                                  "bytes=0, HidD_SetOutputReport err=87)",
                                  "[WARN] Failed to send BOOTSEL command to 0000000000000002 (WriteFile err=0, "
                                  "bytes=31, HidD_SetOutputReport err=5)",
                                  nobodyAccepts}));
    // Each call sends again, and one board that accepts is enough, whatever the others do.
    bus.setFaults(first, {});
    manager->sendBootselCommand();
    EXPECT_EQ(countCalls(HidCall::Write), 4U);
    EXPECT_EQ(log.linesWith(nobodyAccepts).size(), 1U);
}

TEST_F(HidManagerBootsel, BoardsWithoutWriteHandleAreSkippedSilently) {
    bus.setFaults(first, noWriteHandle);
    bus.setFaults(second, noWriteHandle);
    startWithBoards();
    manager->sendBootselCommand();
    EXPECT_EQ(bus.callTexts(), Lines());
    EXPECT_EQ(log.lines(), (Lines{nobodyAccepts}));
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
