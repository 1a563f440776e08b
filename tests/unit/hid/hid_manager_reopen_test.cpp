// Sessions whose reader has ended while their board is still there. Scenarios show a replug under the old path, with
// and without the setting.

#include "tests/unit/hid/hid_fixture.h"

namespace {

class HidManagerReopen : public HidFixture {
protected:
    void startWithBoard() {
        bus.plug(board);
        auto used = settings();
        used.reopenStoppedReaders = true;
        startClean(used);
    }
};

} // namespace

TEST_F(HidManagerReopen, RevivesABoardInOnePassAndLeavesTheOthersAlone) {
    plugNew(2);
    startWithBoard();
    manager->sendSimStatus(true);
    bus.setFaults(board, {.readsFail = true});
    ASSERT_TRUE(waitForEndedReaders(1));
    bus.setFaults(board, {});
    board->clearOutputs();
    manager->scanDevices();
    manager->scanDevices();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001",
                                  "[INFO] HID device connected: 0000000000000001 index=2"}));
    EXPECT_EQ(board->outputs().size(), 1U) << "the simulator's state is repeated to a new session";
    EXPECT_EQ(host.threadsStarted(), 4U);
    board->press(7);
    EXPECT_TRUE(events.waitForCount(1));
}

TEST_F(HidManagerReopen, TriesABoardThatNeverReadsOnceAPass) {
    startWithBoard();
    bus.setFaults(board, {.readsFail = true});
    ASSERT_TRUE(waitForEndedReaders(1));
    for (int pass = 1; pass <= 3; ++pass) {
        manager->scanDevices();
        EXPECT_EQ(devices(), (Devices{{firstName, pass}}));
        ASSERT_TRUE(waitForEndedReaders(static_cast<std::size_t>(pass) + 1));
    }
    EXPECT_EQ(log.linesWith("connected: ").size(), 6U);
}
