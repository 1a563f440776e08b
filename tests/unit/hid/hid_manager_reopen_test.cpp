// Sessions whose reader has ended while their board is still there, or is there again under its old path.

#include "tests/unit/hid/hid_fixture.h"

namespace {

using namespace std::chrono_literals;

const Lines reconnected = {"[INFO] HID device disconnected: 0000000000000001",
                           "[INFO] HID device connected: 0000000000000001 index=1"};

class HidManagerReopen : public HidFixture {
protected:
    void startWithBoard(bool reopen) {
        bus.plug(board);
        auto used = settings();
        used.reopenStoppedReaders = reopen;
        start(used);
        log.clear();
    }

    /// Waits until that many reader threads have ended; the scan thread goes on.
    bool waitForEndedReaders(std::size_t count) {
        return waitUntil([&] { return host.threadsEnded() == count; }, 30s);
    }

    /// Has the board's reader end while the board stays where it is.
    void stopReader() {
        bus.setFaults(board, {.readsFail = true});
        ASSERT_TRUE(waitForEndedReaders(1));
    }

    std::vector<HidDeviceSummary> devices() { return manager->listDevices(); }

    void expectDelivery(int index) {
        board->press(7);
        ASSERT_TRUE(waitUntil([this] { return !events.events().empty(); }, 30s));
        EXPECT_EQ(events.events()[0].index, index);
    }

    std::shared_ptr<VirtualBoard> board = makeBoard(1);
};

TEST_F(HidManagerReopen, ByDefaultAReplugUnderTheOldPathLeavesADeadSession) {
    startWithBoard(HidManagerSettings().reopenStoppedReaders);
    bus.replug(board);
    ASSERT_TRUE(waitForEndedReaders(1));
    manager->scanDevices();
    board->press(7);
    EXPECT_TRUE(manager->sendLedControl("", 0, {1, 9, 0, 0, 0}));
    EXPECT_EQ(board->led(), std::nullopt);
    EXPECT_EQ(log.lines(), (Lines{"[WARN] HID led_ctl write failed for 0000000000000001 (err=1167)"}));
    ASSERT_EQ(devices().size(), 1U);
    EXPECT_EQ(devices()[0].index, 0);
    EXPECT_TRUE(events.events().empty());
    EXPECT_EQ(host.threadsStarted(), 2U);
}

TEST_F(HidManagerReopen, ByDefaultADeadSessionEndsOnceAPassMissesItsBoard) {
    startWithBoard(false);
    bus.replug(board);
    ASSERT_TRUE(waitForEndedReaders(1));
    bus.unplug(board);
    manager->scanDevices();
    bus.plug(board);
    manager->scanDevices();
    EXPECT_EQ(log.lines(), reconnected);
    expectDelivery(1);
}

TEST_F(HidManagerReopen, RevivesABoardThatIsBackUnderItsOldPathInOnePass) {
    startWithBoard(true);
    bus.replug(board);
    ASSERT_TRUE(waitForEndedReaders(1));
    manager->scanDevices();
    EXPECT_EQ(log.lines(), reconnected);
    expectDelivery(1);
    EXPECT_TRUE(manager->sendLedControl("", 1, {1, 9, 0, 0, 0}));
    EXPECT_EQ(board->led(), (LedCommand{1, 9, 0, 0, 0}));
}

TEST_F(HidManagerReopen, RevivesABoardThatStayedWhereItWas) {
    startWithBoard(true);
    manager->sendSimStatus(true);
    stopReader();
    bus.setFaults(board, {});
    board->clearOutputs();
    manager->scanDevices();
    EXPECT_EQ(log.lines(), reconnected);
    EXPECT_EQ(board->outputs().size(), 1U) << "the simulator's state is repeated to a new session";
    expectDelivery(1);
}

TEST_F(HidManagerReopen, TriesABoardThatNeverReadsOnceAPass) {
    startWithBoard(true);
    stopReader();
    for (int pass = 1; pass <= 3; ++pass) {
        manager->scanDevices();
        ASSERT_EQ(devices().size(), 1U);
        EXPECT_EQ(devices()[0].index, pass);
        ASSERT_TRUE(waitForEndedReaders(static_cast<std::size_t>(pass) + 1));
    }
    EXPECT_EQ(log.linesWith("connected: ").size(), 6U);
}

TEST_F(HidManagerReopen, LeavesTheOtherBoardsAlone) {
    const auto other = plugNew(2);
    startWithBoard(true);
    ASSERT_TRUE(waitForReader(other));
    stopReader();
    bus.setFaults(board, {});
    manager->scanDevices();
    manager->scanDevices();
    EXPECT_EQ(log.linesWith("0000000000000002"), Lines());
    EXPECT_EQ(log.linesWith("connected: ").size(), 2U);
    EXPECT_EQ(host.threadsStarted(), 4U);
}

TEST_F(HidManagerReopen, EndsTheSessionOfABoardThatCanNotBeOpenedAnyMore) {
    startWithBoard(true);
    bus.setFaults(board, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Overlapped},
                                           {HidAccess::ReadOnly, HidMode::Overlapped}},
                          .readsFail = true});
    ASSERT_TRUE(waitForEndedReaders(1));
    manager->scanDevices();
    EXPECT_TRUE(devices().empty());
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001",
                                  "[WARN] Failed to open HID device: port#0001"}));
}

} // namespace
