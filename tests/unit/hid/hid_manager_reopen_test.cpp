// Sessions whose reader has ended while their board is still there, or is there again under its old path.

#include "tests/unit/hid/hid_fixture.h"

namespace {

const Lines reconnected = {"[INFO] HID device disconnected: 0000000000000001",
                           "[INFO] HID device connected: 0000000000000001 index=1"};

class HidManagerReopen : public HidFixture {
protected:
    void startWithBoard(bool reopen) {
        bus.plug(board);
        auto used = settings();
        used.reopenStoppedReaders = reopen;
        startClean(used);
    }

    /// Waits until that many reader threads have ended; the scan thread goes on.
    bool waitForEndedReaders(std::size_t count) {
        return waitUntil([&] { return host.threadsEnded() == count; });
    }

    /// Has the board's reader end while the board stays where it is.
    void stopReader() {
        bus.setFaults(board, {.readsFail = true});
        ASSERT_TRUE(waitForEndedReaders(1));
        bus.setFaults(board, {});
    }

    void expectReconnectedAndDelivering() {
        EXPECT_EQ(log.lines(), reconnected);
        board->press(7);
        ASSERT_TRUE(events.waitForCount(1));
        EXPECT_EQ(events.events()[0].index, 1);
    }

    std::shared_ptr<VirtualBoard> board = makeBoard(1);
};

} // namespace

TEST_F(HidManagerReopen, ByDefaultAReplugUnderTheOldPathLeavesADeadSessionUntilAPassMissesTheBoard) {
    startWithBoard(HidManagerSettings().reopenStoppedReaders);
    bus.replug(board);
    ASSERT_TRUE(waitForEndedReaders(1));
    manager->scanDevices();
    board->press(7);
    EXPECT_TRUE(manager->sendLedControl("", 0, {1, 9, 0, 0, 0}));
    EXPECT_EQ(board->led(), std::nullopt);
    EXPECT_EQ(log.lines(), (Lines{"[WARN] HID led_ctl write failed for 0000000000000001 (err=1167)"}));
    EXPECT_EQ(devices(), (Devices{{firstName, 0}}));
    EXPECT_TRUE(events.events().empty());
    EXPECT_EQ(host.threadsStarted(), 2U);
    log.clear();
    bus.unplug(board);
    manager->scanDevices();
    bus.plug(board);
    manager->scanDevices();
    expectReconnectedAndDelivering();
}

TEST_F(HidManagerReopen, RevivesABoardThatIsBackUnderItsOldPathInOnePass) {
    startWithBoard(true);
    bus.replug(board);
    ASSERT_TRUE(waitForEndedReaders(1));
    manager->scanDevices();
    expectReconnectedAndDelivering();
    EXPECT_TRUE(manager->sendLedControl("", 1, {1, 9, 0, 0, 0}));
    EXPECT_EQ(board->led(), (LedCommand{1, 9, 0, 0, 0}));
}

TEST_F(HidManagerReopen, RevivesABoardThatStayedWhereItWasAndLeavesTheOthersAlone) {
    const auto other = plugNew(2);
    startWithBoard(true);
    manager->sendSimStatus(true);
    ASSERT_TRUE(waitForReader(other));
    stopReader();
    board->clearOutputs();
    manager->scanDevices();
    manager->scanDevices();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001",
                                  "[INFO] HID device connected: 0000000000000001 index=2"}));
    EXPECT_EQ(board->outputs().size(), 1U) << "the simulator's state is repeated to a new session";
    EXPECT_EQ(host.threadsStarted(), 4U);
}

TEST_F(HidManagerReopen, TriesABoardThatNeverReadsOnceAPass) {
    startWithBoard(true);
    bus.setFaults(board, {.readsFail = true});
    ASSERT_TRUE(waitForEndedReaders(1));
    for (int pass = 1; pass <= 3; ++pass) {
        manager->scanDevices();
        EXPECT_EQ(devices(), (Devices{{firstName, pass}}));
        ASSERT_TRUE(waitForEndedReaders(static_cast<std::size_t>(pass) + 1));
    }
    EXPECT_EQ(log.linesWith("connected: ").size(), 6U);
}

TEST_F(HidManagerReopen, EndsTheSessionOfABoardThatCanNotBeOpenedAnyMore) {
    startWithBoard(true);
    stopReader();
    bus.setFaults(board, noReadHandle);
    manager->scanDevices();
    EXPECT_EQ(devices(), Devices());
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001",
                                  "[WARN] Failed to open HID device: port#0001"}));
}
