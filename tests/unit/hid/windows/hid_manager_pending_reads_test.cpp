// Sessions on the system's own overlapped reads, which a pipe answers for the board.

#include "tests/support/windows/board_pipe.h"
#include "tests/unit/hid/hid_fixture.h"
#include "tests/unit/hid/reader_lifetime.h"

#include <atomic>
#include <chrono>

namespace {

using namespace std::chrono_literals;

/// Stands for the handles that are only probed or written to. The pipe takes one opening alone, the reader's.
constexpr HidHandle madeUpHandle = 1000000;

class HidManagerPendingReads : public testing::Test {
protected:
    HidManagerPendingReads() {
        host.holdSleeps();
        HidTransport transport = systemPlatform().hid;
        transport.enumerate = [this] {
            return plugged ? std::vector<std::string>{board.path} : std::vector<std::string>{};
        };
        transport.attributes = [](HidHandle, HidAttributes& attributes) {
            attributes = {0x1234, 0xABCD};
            return true;
        };
        const auto openReal = transport.open;
        transport.open = [openReal](const std::string& path, HidAccess access, HidMode mode) {
            return mode == HidMode::Overlapped ? openReal(path, access, mode) : madeUpHandle;
        };
        makeReadersImpatient(transport);
        manager = std::make_unique<HidManager>(lifetimes.watch(transport), host.record());
    }
    ~HidManagerPendingReads() override { end(); }

    /// Readers that leave another read pending with every millisecond instead of every second.
    void makeReadersImpatient(HidTransport& transport) {
        const auto makeReal = transport.makeReader;
        transport.makeReader = [this, makeReal](HidHandle handle) -> HidReader {
            return [this, reader = makeReal(handle)](std::chrono::milliseconds) {
                const HidReadResult result = reader(1ms);
                timeouts += result.status == HidReadStatus::Timeout ? 1 : 0;
                failures += result.status == HidReadStatus::Failure ? 1 : 0;
                return result;
            };
        };
    }

    void start() {
        std::string error;
        ASSERT_TRUE(manager->start(HidFixture::settings(), events.callback(), error)) << error;
        ASSERT_GE(host.waitForSleep(), 0);
        ASSERT_TRUE(waitUntil([this] { return timeouts >= 3; }));
    }

    void end() {
        host.letSleepsPass();
        manager.reset();
    }

    FakeHost host;
    LogCapture log;
    BoardPipe board;
    EventRecorder events;
    ReaderLifetimes lifetimes;
    std::atomic<bool> plugged{true};
    std::atomic<int> timeouts{0};
    std::atomic<int> failures{0};
    std::unique_ptr<HidManager> manager;
};

TEST_F(HidManagerPendingReads, EndBeforeTheirMemoryWhenTheBoardIsPulled) {
    start();
    plugged = false;
    manager->scanDevices();
    EXPECT_EQ(lifetimes.happenings(), (Lines{"handle closed", "reader destroyed"}));
    EXPECT_FALSE(manager->hasDevices());
}

TEST_F(HidManagerPendingReads, EndBeforeTheirMemoryWhenTheManagerStops) {
    start();
    end();
    EXPECT_EQ(lifetimes.happenings(), (Lines{"handle closed", "reader destroyed"}));
}

TEST_F(HidManagerPendingReads, KeepTheirMemoryWhileTheSessionIsStalled) {
    start();
    board.hangUp();
    ASSERT_TRUE(waitUntil([this] { return failures == 1; }));
    manager->scanDevices();
    EXPECT_TRUE(manager->hasDevices());
    EXPECT_EQ(lifetimes.happenings(), Lines{});
    plugged = false;
    manager->scanDevices();
    EXPECT_EQ(lifetimes.happenings(), (Lines{"handle closed", "reader destroyed"}));
}

TEST_F(HidManagerPendingReads, DoNotKeepTheReaderFromTheNextReports) {
    start();
    std::string report(32, '\0');
    report[0] = 0x01;
    // Each pending read swallows one report; then the reader waits for the next.
    EXPECT_TRUE(waitUntil([&] { return !board.send(report) || !events.events().empty(); }));
    EXPECT_FALSE(events.events().empty());
}

} // namespace
