// Sessions on the system's own overlapped reads, which a pipe answers for the board.

#include "tests/support/windows/board_pipe.h"
#include "tests/unit/hid/hid_fixture.h"
#include "tests/unit/hid/reader_lifetime.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

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
        transport.makeReader = impatient(transport.makeReader);
        transport.makeSinglePendingReader = impatient(transport.makeSinglePendingReader);
        manager = std::make_unique<HidManager>(lifetimes.watch(transport), host.record());
    }
    ~HidManagerPendingReads() override { end(); }

    using ReaderMaker = std::function<HidReader(HidHandle handle)>;

    /// Makes readers whose reads time out every millisecond instead of every second, and which can be held up.
    ReaderMaker impatient(const ReaderMaker& makeReal) {
        return [this, makeReal](HidHandle handle) -> HidReader {
            return [this, reader = makeReal(handle)](std::chrono::milliseconds) {
                while (held) {
                    isHeld = true;
                    std::this_thread::sleep_for(1ms);
                }
                const HidReadResult result = reader(1ms);
                timeouts += result.status == HidReadStatus::Timeout ? 1 : 0;
                failures += result.status == HidReadStatus::Failure ? 1 : 0;
                return result;
            };
        };
    }

    static std::string press(int control) {
        std::string report(32, '\0');
        report[0] = 0x01;
        report[4] = static_cast<char>(control);
        return report;
    }

    /// Sends presses of the controls 1 to `count`, all before the reader looks again.
    void sendWhileNobodyReads(int count) {
        held = true;
        EXPECT_TRUE(waitUntil([this] { return isHeld.load(); }));
        for (int control = 1; control <= count; ++control) {
            EXPECT_TRUE(board.send(press(control)));
        }
        held = false;
    }

    void start(bool singlePendingRead = false) {
        std::string error;
        HidManagerSettings settings = HidFixture::settings();
        settings.singlePendingRead = singlePendingRead;
        ASSERT_TRUE(manager->start(settings, events.callback(), error)) << error;
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
    std::atomic<bool> held{false};
    std::atomic<bool> isHeld{false};
    std::unique_ptr<HidManager> manager;
};

TEST_F(HidManagerPendingReads, KeepTheirMemoryWhileTheSessionIsStalledAndEndBeforeItWhenTheBoardIsPulled) {
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

TEST_F(HidManagerPendingReads, SwallowAReportEachButNotTheNextOnes) {
    start();
    sendWhileNobodyReads(2);
    constexpr int later = 99;
    EXPECT_TRUE(waitUntil([&] { return !board.send(press(later)) || !events.controls().empty(); }));
    ASSERT_FALSE(events.controls().empty());
    EXPECT_EQ(events.controls().front(), later);
}

TEST_F(HidManagerPendingReads, AreOneAtMostAndSwallowNothingIfAskedFor) {
    start(true);
    sendWhileNobodyReads(8);
    EXPECT_TRUE(waitUntil([&] { return events.controls().size() >= 8; }));
    EXPECT_EQ(events.controls(), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}));
    end();
    EXPECT_EQ(lifetimes.happenings(), (Lines{"handle closed", "reader destroyed"}));
}

} // namespace
