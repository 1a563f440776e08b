// Somebody else's device that hangs when it is opened, as each pass does to ask for its ids.

#include "tests/unit/hid/hid_fixture.h"

#include <atomic>
#include <condition_variable>
#include <thread>

namespace {

/// Holds calls about one path until it is let go.
class Hang {
public:
    void pass() {
        std::unique_lock lock(mutex);
        ++callers;
        changed.notify_all();
        changed.wait(lock, [this] { return released; });
    }
    void waitForCaller() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return callers > 0; });
    }
    void release() {
        const std::lock_guard lock(mutex);
        released = true;
        changed.notify_all();
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    int callers = 0;
    bool released = false;
};

/// One board in session, and a device that hangs when it is opened.
class HidManagerForeignDevice : public HidFixture {
protected:
    HidManagerForeignDevice() {
        HidTransport transport = bus.transport();
        transport.open = [this, open = transport.open](const std::string& path, HidAccess access, HidMode mode) {
            if (path == foreignPath) {
                hang.pass();
            }
            return open(path, access, mode);
        };
        manager = std::make_unique<HidManager>(transport, host.record());
        bus.plug(board);
        start();
        EXPECT_TRUE(waitForReader(board));
        foreignPath = bus.plug(makeBoard(9), "foreign");
        bus.clearCalls();
        pass = std::thread([this] { manager->scanDevices(); });
        hang.waitForCaller();
    }
    ~HidManagerForeignDevice() override {
        hang.release();
        pass.join();
        end();
    }

    Hang hang;
    std::shared_ptr<VirtualBoard> board = makeBoard(1);
    std::string foreignPath;
    std::thread pass;
};

TEST_F(HidManagerForeignDevice, ThatHangsOnOpenLeavesOurBoardAtWork) {
    board->press(3);
    EXPECT_TRUE(events.waitForCount(1));
    manager->sendSimStatus(true);
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, {1, 20, 0, 0, 0}));
    EXPECT_EQ(board->led(), (LedCommand{1, 20, 0, 0, 0}));
    EXPECT_TRUE(manager->hasDevices());
    EXPECT_EQ(devices(), (Devices{{firstName, 0}}));
}

// Each pass asks every device on the machine, so one that doesn't answer at the start is waited for.
TEST_F(HidFixture, DeviceThatHangsOnOpenHoldsTheStartUpUntilItLetsGo) {
    Hang hang;
    HidTransport transport = bus.transport();
    transport.open = [&, open = transport.open](const std::string& path, HidAccess access, HidMode mode) {
        hang.pass();
        return open(path, access, mode);
    };
    manager = std::make_unique<HidManager>(transport, host.record());
    plugNew(1);
    std::atomic<bool> started{false};
    std::thread starting([&] {
        start();
        started = true;
    });
    hang.waitForCaller();
    EXPECT_FALSE(started);
    hang.release();
    starting.join();
    EXPECT_TRUE(manager->hasDevices());
    end();
}

} // namespace
