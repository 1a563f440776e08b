// A reader holds what the system writes to as long as reads are pending, so it always ends after its handle.

#include "tests/unit/hid/hid_fixture.h"
#include "tests/unit/hid/reader_lifetime.h"

#include <system_error>

namespace {

const Lines inOrder = {"handle closed", "reader destroyed"};

class HidManagerReaderLifetime : public HidFixture {
protected:
    HidManagerReaderLifetime() {
        useTransport(lifetimes.watch(bus.transport()));
        bus.plug(board);
    }
    ~HidManagerReaderLifetime() override { end(); }

    void startReading() {
        start();
        ASSERT_TRUE(waitForReader());
    }

    ReaderLifetimes lifetimes;
};

} // namespace

TEST_F(HidManagerReaderLifetime, OutlastsItsThreadAndEndsAfterItsHandleWhenTheBoardIsPulled) {
    startReading();
    bus.setFaults(board, {.readsFail = true});
    ASSERT_TRUE(waitUntil([this] { return bus.pendingReadCount(board) == 0; }));
    manager->scanDevices();
    EXPECT_TRUE(manager->hasDevices());
    EXPECT_EQ(lifetimes.happenings(), Lines{});
    bus.unplug(board);
    manager->scanDevices();
    EXPECT_EQ(lifetimes.happenings(), inOrder);
}

TEST_F(HidManagerReaderLifetime, EndsAfterItsHandleWhenTheManagerStops) {
    startReading();
    stop();
    EXPECT_EQ(lifetimes.happenings(), inOrder);
}

TEST_F(HidManagerReaderLifetime, EndsAfterItsHandleWhenThereIsNoThread) {
    host.refuseThreadsAfter(0);
    std::string error;
    EXPECT_THROW(manager->start(settings(), {}, error), std::system_error);
    EXPECT_EQ(lifetimes.happenings(), inOrder);
    EXPECT_FALSE(manager->hasDevices());
}
