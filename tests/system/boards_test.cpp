// Boards that come, go and identify themselves.

#include "tests/system/support/bridge_test.h"
#include "tests/system/support/hid_watch.h"

namespace {

class Boards : public BridgeTest {
protected:
    /// The bridge alone, up to the end of its start.
    void startAlone() {
        startBridge();
        ASSERT_TRUE(bridge->waitForLog("HID manager started"));
    }
};

/// Under Wine, as on Windows, a board comes back under its old path.
class WindowsBoards : public Boards {
protected:
    /// Wine numbers like boards in their paths: without others, a board gets the same path each time.
    void SetUp() override { BoardPool::unplugOthers({}); }

    /// Pulls the board and puts it back while the bridge can't look.
    void replugUnseen(UhidBoard& board) {
        HidWatch& watch = HidWatch::ofThisRun();
        bridge->process().sendSignal(SIGSTOP);
        const std::string before = watch.lastDevices();
        board.unplug();
        ASSERT_TRUE(watch.waitForDevices(0));
        board.plug();
        ASSERT_TRUE(watch.waitForDevices(1));
        EXPECT_EQ(watch.lastDevices(), before);
        bridge->process().sendSignal(SIGCONT);
    }

    /// Presses again and again: the bridge may lose a report that comes just when its read times out.
    bool pressIsHeard(UhidBoard& board) const {
        board.setPace(nullptr);
        const auto heard = [&] {
            board.panel.press(commandButton);
            return bridge->countInLog("HID event from " + nameOf(board)) > 0;
        };
        return waitUntil(heard, ChildProcess::defaultLimit, std::chrono::milliseconds(100));
    }
};

/// Under Wine each board has a serial number.
using LinuxBoards = Boards;

VirtualBoardModel modelWithoutId() {
    VirtualBoardModel model;
    model.boardId.reset();
    return model;
}

} // namespace

TEST_F(Boards, PresentAtTheStartAreConnectedByIdOrSerialNumberBeforeItIsOver) {
    VirtualBoardModel withSerial = modelWithoutId();
    withSerial.serial = "PANEL-7";
    plugBoard(model());
    plugBoard(withSerial);
    startAlone();
    const std::string log = bridge->log();
    const std::string start = log.substr(0, log.find("HID manager started"));
    EXPECT_EQ(countOf(start, "HID device connected: E66138A1B2C3D401 index="), 1U);
    EXPECT_EQ(countOf(start, "HID protocol info: device=E66138A1B2C3D401 proto=1.3 flags=0x0A\n"), 1U);
    EXPECT_EQ(countOf(start, "HID device connected: PANEL-7 index="), 1U);
    EXPECT_EQ(countOf(start, " index=0\n"), 1U);
    EXPECT_EQ(countOf(start, " index=1\n"), 1U);
}

TEST_F(LinuxBoards, WithoutAnyIdentityGoByTheirPath) {
    const UhidBoard& board = plugBoard(modelWithoutId());
    startAlone();
    EXPECT_EQ(bridge->countInLog("HID device connected: " + board.device().sysfsFolder() + " index=0\n"), 1U);
}

// Without any extension.
TEST_F(WindowsBoards, PutBackUnderTheirOldPathUnseenHaveADeadSession) {
    extensions.clear();
    UhidBoard& board = plugBoard(model());
    startAlone();
    ASSERT_NO_FATAL_FAILURE(replugUnseen(board));
    board.setPace(nullptr);
    board.panel.press(commandButton);
    // Once another board is connected and its press logged, scans have passed and the first press has had its time.
    UhidBoard& other = plugBoard(model(2));
    ASSERT_TRUE(waitForConnection(other, 1));
    ASSERT_TRUE(pressIsHeard(other));
    EXPECT_EQ(bridge->countInLog("HID event from " + nameOf(board)), 0U);
    EXPECT_EQ(bridge->countInLog("HID device disconnected: "), 0U);
}

TEST_F(WindowsBoards, PutBackUnderTheirOldPathUnseenAreReopenedOnRequest) {
    extensions += R"(, "reopenStoppedReaders": 1)";
    UhidBoard& board = plugBoard(model());
    startAlone();
    ASSERT_NO_FATAL_FAILURE(replugUnseen(board));
    ASSERT_TRUE(waitForConnection(board, 1));
    EXPECT_EQ(bridge->countInLog("HID device disconnected: " + nameOf(board) + "\n"), 1U);
    board.panel.press(commandButton);
    EXPECT_TRUE(bridge->waitForLog("HID event from " + nameOf(board) + " index=1 "));
}

// Notifications alone report each change, and the session outlives all of them.
TEST_F(Boards, ComeAndGoWithoutDisturbingTheOthers) {
    scanOnNotificationsOnly();
    ASSERT_NO_FATAL_FAILURE(startSession());
    UhidBoard& first = *boards[0];
    UhidBoard& second = plugBoard(model(2));
    ASSERT_TRUE(waitForConnection(second, 1));
    EXPECT_TRUE(waitForReport(second, reportOf({0x11, 1})));

    first.unplug();
    ASSERT_TRUE(waitForDisconnection(first));
    EXPECT_TRUE(pressWorks(second, 1));

    first.panel.clearOutputs();
    first.plug();
    ASSERT_TRUE(waitForConnection(first, 2));
    EXPECT_TRUE(pressWorks(first, 2));
    EXPECT_TRUE(waitForReport(first, reportOf({0x11, 1})));
    EXPECT_EQ(bridge->countInLog("SimConnect connected\n"), 1U);
}

TEST_F(Boards, OfOtherMakersAreNeverAskedOrWrittenTo) {
    VirtualBoardModel foreignModel = model(9);
    foreignModel.productId = 0xABCE;
    UhidBoard& foreign = plugBoard(foreignModel);
    UhidBoard& own = plugBoard(model());
    startAlone();
    bridge->process().writeLine("bootsel");
    ASSERT_TRUE(waitForReport(own, reportOf({0x12, 2})));
    foreign.setPace(nullptr);
    foreign.panel.press(commandButton);
    own.panel.press(commandButton);
    ASSERT_TRUE(bridge->waitForLog("HID event from " + nameOf(own)));
    EXPECT_EQ(bridge->countInLog("HID event from "), 1U);
    EXPECT_TRUE(foreign.panel.outputs().empty());
    EXPECT_EQ(foreign.device().featureRequests(), 0);
}

TEST_F(Boards, AllGetTheBootselCommand) {
    const UhidBoard& first = plugBoard(model(1));
    const UhidBoard& second = plugBoard(model(2));
    startAlone();
    bridge->process().writeLine("bootsel");
    // Wine takes the whole report but says that it wrote 31 bytes, so the control pipe brings it once more.
    const std::string route = TestedSystem::isWindows() ? "HidD_SetOutputReport" : "WriteFile";
    for (const UhidBoard* board : {&first, &second}) {
        EXPECT_TRUE(waitForReport(*board, reportOf({0x12, 2})));
        EXPECT_TRUE(bridge->waitForLog("BOOTSEL command sent to " + nameOf(*board) + " via " + route + "\n"));
        EXPECT_EQ(reports(*board, 0x12).size(), TestedSystem::isWindows() ? 2U : 1U);
    }
}
