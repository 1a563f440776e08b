// A reader holds what the system writes to as long as reads are pending: it goes after its handle, on every way.

#include "tests/unit/hid/hid_fixture.h"
#include "tests/unit/hid/reader_lifetime.h"

#include <system_error>

namespace {

const Lines inOrder = {"handle closed", "reader destroyed"};

class HidManagerReaderLifetime : public testing::Test {
protected:
    HidManagerReaderLifetime() { host.holdSleeps(); }
    ~HidManagerReaderLifetime() override { end(); }

    void start() {
        std::string error;
        ASSERT_TRUE(manager->start(HidFixture::settings(), {}, error)) << error;
        ASSERT_GE(host.waitForSleep(), 0);
        ASSERT_TRUE(waitUntil([this] { return bus.pendingReadCount(board) > 0; }));
    }

    void end() {
        host.letSleepsPass();
        manager.reset();
    }

    FakeHost host;
    LogCapture log;
    VirtualHidBus bus;
    std::shared_ptr<VirtualBoard> board = HidFixture::makeBoard(1);
    ReaderLifetimes lifetimes;
    std::unique_ptr<HidManager> manager = std::make_unique<HidManager>(lifetimes.watch(bus.transport()), host.record());
};

TEST_F(HidManagerReaderLifetime, EndsAfterItsHandleWhenTheBoardIsPulled) {
    bus.plug(board);
    start();
    bus.unplug(board);
    manager->scanDevices();
    EXPECT_EQ(lifetimes.happenings(), inOrder);
}

TEST_F(HidManagerReaderLifetime, EndsAfterItsHandleWhenTheManagerStops) {
    bus.plug(board);
    start();
    host.letSleepsPass();
    manager->stop();
    EXPECT_EQ(lifetimes.happenings(), inOrder);
}

TEST_F(HidManagerReaderLifetime, EndsAfterItsHandleWhenTheManagerIsDestroyed) {
    bus.plug(board);
    start();
    end();
    EXPECT_EQ(lifetimes.happenings(), inOrder);
}

TEST_F(HidManagerReaderLifetime, OutlastsItsThreadWhileTheSessionIsStalled) {
    bus.plug(board);
    start();
    bus.setFaults(board, {.readsFail = true});
    ASSERT_TRUE(waitUntil([this] { return bus.pendingReadCount(board) == 0; }));
    manager->scanDevices();
    EXPECT_TRUE(manager->hasDevices());
    EXPECT_EQ(lifetimes.happenings(), Lines{});
    bus.unplug(board);
    manager->scanDevices();
    EXPECT_EQ(lifetimes.happenings(), inOrder);
}

TEST_F(HidManagerReaderLifetime, EndsAfterItsHandleWhenNoThreadCanBeHad) {
    bus.plug(board);
    host.refuseThreadsAfter(0);
    std::string error;
    EXPECT_THROW(manager->start(HidFixture::settings(), {}, error), std::system_error);
    EXPECT_EQ(lifetimes.happenings(), inOrder);
}

} // namespace
