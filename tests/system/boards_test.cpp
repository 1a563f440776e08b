// Boards that come, go and say who they are.

#include "tests/system/support/bridge_test.h"
#include "tests/system/support/hid_watch.h"

#include <csignal>
#include <filesystem>

namespace {

class Boards : public BridgeTest {
protected:
    /// The bridge alone, up to the end of its start.
    void startAlone(const std::vector<std::string>& arguments = {"--console"}) {
        startBridge(arguments);
        ASSERT_TRUE(bridge->waitForLog("HID manager started"));
    }

    bool waitForConnection(const std::string& name, int index) {
        return bridge->waitForLog("HID device connected: " + name + " index=" + std::to_string(index) + "\n");
    }
};

/// Under Wine, as on Windows, a board comes back under its old path.
class WindowsBoards : public Boards {
protected:
    /// Pulls the board and puts it back while the bridge can't look.
    void replugUnseen(UhidBoard& board) {
        bridge->process().sendSignal(SIGSTOP);
        const std::string before = HidWatch::ofThisRun().lastDevices();
        board.unplug();
        ASSERT_TRUE(HidWatch::ofThisRun().waitForDevices(0));
        board.plug();
        ASSERT_TRUE(HidWatch::ofThisRun().waitForDevices(1));
        EXPECT_EQ(HidWatch::ofThisRun().lastDevices(), before);
        bridge->process().sendSignal(SIGCONT);
    }
};

/// What only the kernel's own nodes can tell.
class LinuxBoards : public Boards {
protected:
    /// Whether the bridge has that file open.
    bool holdsOpen(const std::string& path) {
        const std::string folder = "/proc/" + std::to_string(bridge->process().id()) + "/fd";
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
            if (std::filesystem::read_symlink(entry.path(), error) == path) {
                return true;
            }
        }
        return false;
    }
};

} // namespace

TEST_F(Boards, AreConnectedByTheirBoardId) {
    UhidBoard& board = plugBoard(model());
    startAlone();
    EXPECT_EQ(nameOf(board), "E66138A1B2C3D401");
    EXPECT_EQ(bridge->countInLog("HID device connected: E66138A1B2C3D401 index=0\n"), 1U);
    EXPECT_EQ(bridge->countInLog("HID protocol info: device=E66138A1B2C3D401 proto=1.3 flags=0x0A\n"), 1U);
    killBridge();
}

TEST_F(Boards, WithoutABoardIdGoByTheirSerialNumber) {
    VirtualBoardModel unnamed;
    unnamed.boardId.reset();
    unnamed.serial = "PANEL-7";
    plugBoard(unnamed);
    startAlone();
    EXPECT_EQ(bridge->countInLog("HID device connected: PANEL-7 index=0\n"), 1U);
    EXPECT_EQ(bridge->countInLog("HID protocol info"), 0U);
    killBridge();
}

TEST_F(LinuxBoards, WithoutAnyIdentityGoByTheirPath) {
    VirtualBoardModel unnamed;
    unnamed.boardId.reset();
    const UhidBoard& board = plugBoard(unnamed);
    startAlone();
    EXPECT_EQ(bridge->countInLog("HID device connected: " + board.path() + " index=0\n"), 1U);
    killBridge();
}

TEST_F(Boards, PresentAtTheStartAreConnectedBeforeItIsOver) {
    const UhidBoard& first = plugBoard(model(1));
    const UhidBoard& second = plugBoard(model(2));
    startAlone();
    const std::string log = bridge->log();
    const std::string started = log.substr(0, log.find("HID manager started"));
    EXPECT_EQ(countOf(started, "HID device connected: " + nameOf(first) + " index="), 1U);
    EXPECT_EQ(countOf(started, "HID device connected: " + nameOf(second) + " index="), 1U);
    EXPECT_EQ(countOf(started, " index=0\n"), 1U);
    EXPECT_EQ(countOf(started, " index=1\n"), 1U);
    killBridge();
}

TEST_F(Boards, PulledAndPutBackGetTheNextIndex) {
    scanOnNewsOnly();
    UhidBoard& board = plugBoard(model());
    startAlone();
    board.unplug();
    ASSERT_TRUE(bridge->waitForLog("HID device disconnected: " + nameOf(board) + "\n"));
    board.plug();
    EXPECT_TRUE(waitForConnection(nameOf(board), 1));
    killBridge();
}

TEST_F(Boards, PulledAndPutBackBetweenTwoScansAreANewConnection) {
    scanOnNewsOnly();
    UhidBoard& board = plugBoard(model());
    startAlone();
    board.unplug();
    board.plug();
    EXPECT_TRUE(waitForConnection(nameOf(board), 1));
    EXPECT_EQ(bridge->countInLog("HID device disconnected: " + nameOf(board) + "\n"), 1U);
    killBridge();
}

TEST_F(WindowsBoards, PutBackUnderTheirOldPathUnseenHaveADeadSession) {
    UhidBoard& board = plugBoard(model());
    startAlone();
    ASSERT_NO_FATAL_FAILURE(replugUnseen(board));
    board.panel.press(Controls::button);
    // Once another board is connected and heard, scans have passed and the press has had its time.
    UhidBoard& other = plugBoard(model(2));
    ASSERT_TRUE(waitForConnection(nameOf(other), 1));
    other.panel.press(Controls::button);
    ASSERT_TRUE(bridge->waitForLog("HID event from " + nameOf(other)));
    EXPECT_EQ(bridge->countInLog("HID event from " + nameOf(board)), 0U);
    EXPECT_EQ(bridge->countInLog("HID device disconnected: "), 0U);
    killBridge();
}

TEST_F(WindowsBoards, PutBackUnderTheirOldPathUnseenAreReopenedIfAskedFor) {
    configuration.extensions = R"("reopenStoppedReaders": 1)";
    UhidBoard& board = plugBoard(model());
    startAlone();
    ASSERT_NO_FATAL_FAILURE(replugUnseen(board));
    ASSERT_TRUE(waitForConnection(nameOf(board), 1));
    EXPECT_EQ(bridge->countInLog("HID device disconnected: " + nameOf(board) + "\n"), 1U);
    board.panel.press(Controls::button);
    EXPECT_TRUE(bridge->waitForLog("HID event from " + nameOf(board) + " index=1 "));
    killBridge();
}

TEST_F(Boards, AreHeardOfBetweenTwoScans) {
    scanOnNewsOnly();
    startAlone();
    UhidBoard& board = plugBoard(model());
    EXPECT_TRUE(waitForConnection(nameOf(board), 0));
    board.unplug();
    EXPECT_TRUE(bridge->waitForLog("HID device disconnected: " + nameOf(board) + "\n"));
    killBridge();
}

TEST_F(Boards, GoOnWorkingWhenAnotherIsPulled) {
    scanOnNewsOnly();
    ASSERT_NO_FATAL_FAILURE(startSession());
    UhidBoard& other = plugBoard(model(2));
    ASSERT_TRUE(waitForConnection(nameOf(other), 1));
    other.unplug();
    ASSERT_TRUE(bridge->waitForLog("HID device disconnected: " + nameOf(other) + "\n"));
    boards[0]->panel.press(Controls::button);
    EXPECT_TRUE(waitForRpn("(>H:BUTTON_PRESS)"));
}

TEST_F(Boards, PutBackWorkAgain) {
    scanOnNewsOnly();
    ASSERT_NO_FATAL_FAILURE(startSession());
    boards[0]->unplug();
    ASSERT_TRUE(bridge->waitForLog("HID device disconnected: " + nameOf(*boards[0]) + "\n"));
    boards[0]->plug();
    ASSERT_TRUE(waitForConnection(nameOf(*boards[0]), 1));
    boards[0]->panel.press(Controls::button);
    EXPECT_TRUE(waitForRpn("(>H:BUTTON_PRESS)"));
    EXPECT_TRUE(waitForReport(*boards[0], reportOf({0x11, 1})));
}

TEST_F(LinuxBoards, WhoseNodeIsGoneAreNeverConnected) {
    UhidBoard& closed = plugBoard(model(1));
    std::filesystem::remove(closed.device().node());
    UhidBoard& good = plugBoard(model(2));
    startAlone();
    EXPECT_EQ(bridge->countInLog("HID device connected: " + nameOf(good) + " index=0\n"), 1U);
    EXPECT_EQ(bridge->countInLog(nameOf(closed)), 0U);
    killBridge();
}

TEST_F(Boards, OfOtherMakersAreNeverAskedOrWrittenTo) {
    VirtualBoardModel foreignVendor = model(8);
    foreignVendor.vendorId = 0x1235;
    VirtualBoardModel foreignProduct = model(9);
    foreignProduct.productId = 0xABCE;
    UhidBoard& byVendor = plugBoard(foreignVendor);
    UhidBoard& byProduct = plugBoard(foreignProduct);
    UhidBoard& own = plugBoard(model());
    startSimulator();
    startBridge();
    ASSERT_TRUE(bridge->waitForLog("MobiFlight client registered"));
    bridge->process().writeLine("bootsel");
    ASSERT_TRUE(waitUntil([&] { return own.panel.inBootsel(); }, ChildProcess::defaultLimit));
    byVendor.panel.press(Controls::button);
    own.panel.press(Controls::button);
    EXPECT_EQ(commandsUntilNow(own), std::vector<std::string>{"1 (>H:BUTTON_PRESS)"});
    for (const UhidBoard* foreign : {&byVendor, &byProduct}) {
        EXPECT_TRUE(foreign->panel.outputs().empty());
        EXPECT_EQ(foreign->featureRequests(), 0);
    }
}

TEST_F(LinuxBoards, OfOtherMakersAreNotKeptOpen) {
    VirtualBoardModel foreignVendor = model(8);
    foreignVendor.vendorId = 0x1235;
    const UhidBoard& foreign = plugBoard(foreignVendor);
    const UhidBoard& own = plugBoard(model());
    startAlone();
    EXPECT_TRUE(holdsOpen(own.device().node()));
    // A probe holds it for a moment, but no longer.
    EXPECT_TRUE(waitUntil([&] { return !holdsOpen(foreign.device().node()); }));
    killBridge();
}

TEST_F(Boards, AllGetTheBootselCommand) {
    UhidBoard& first = plugBoard(model(1));
    UhidBoard& second = plugBoard(model(2));
    startAlone();
    bridge->process().writeLine("BootSel");
    const auto bootsel = reportOf({0x12, 2});
    EXPECT_TRUE(waitForReport(first, bootsel));
    EXPECT_TRUE(waitForReport(second, bootsel));
    // Wine takes the whole report but says that it wrote 31 bytes, so the control pipe brings it once more.
    const std::string route = TestedSystem::isWindows() ? "HidD_SetOutputReport" : "WriteFile";
    EXPECT_TRUE(bridge->waitForLog("BOOTSEL command sent to " + nameOf(first) + " via " + route + "\n"));
    EXPECT_TRUE(bridge->waitForLog("BOOTSEL command sent to " + nameOf(second) + " via " + route + "\n"));
    // Not cached: each command is sent.
    const std::size_t once = reports(first, 0x12).size();
    EXPECT_EQ(once, TestedSystem::isWindows() ? 2U : 1U);
    bridge->process().writeLine("boot");
    EXPECT_TRUE(waitUntil([&] { return reports(first, 0x12).size() == 2 * once; }, ChildProcess::defaultLimit));
    killBridge();
}

TEST_F(Boards, MissingForBootselAreReported) {
    startAlone();
    bridge->process().writeLine("bootsel");
    EXPECT_TRUE(bridge->waitForLog("[WARN] No HID device accepted BOOTSEL command\n"));
}
