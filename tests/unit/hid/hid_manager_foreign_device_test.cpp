// Somebody else's device on the same machine, healthy or not: it is asked for its ids and nothing else.

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

/// One board of ours in session and a device of another vendor's that hangs when it is opened.
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
        foreignPath = bus.plug(foreign, "foreign");
        bus.clearCalls();
        pass = std::thread([this] { manager->scanDevices(); });
        hang.waitForCaller();
    }
    ~HidManagerForeignDevice() override {
        letGo();
        end();
    }

    void letGo() {
        hang.release();
        if (pass.joinable()) {
            pass.join();
        }
    }

    static std::shared_ptr<VirtualBoard> makeForeign() {
        VirtualBoardModel model;
        model.vendorId = 0x046D;
        return std::make_shared<VirtualBoard>(model);
    }

    Hang hang;
    std::shared_ptr<VirtualBoard> board = makeBoard(1);
    std::shared_ptr<VirtualBoard> foreign = makeForeign();
    std::string foreignPath;
    std::thread pass;
};

TEST_F(HidManagerForeignDevice, ThatHangsOnOpenLeavesOurBoardAtWork) {
    board->press(3);
    EXPECT_TRUE(events.waitForCount(1));
    manager->sendSimStatus(true);
    EXPECT_TRUE(manager->sendLedControl("0000000000000001", 0, {1, 20, 0, 0, 0}));
    EXPECT_EQ(board->led(), (LedCommand{1, 20, 0, 0, 0}));
    EXPECT_TRUE(manager->hasDevices());
    EXPECT_EQ(manager->listDevices().size(), 1U);
}

TEST_F(HidManagerForeignDevice, ThatLetsGoAgainHasCostNoChangeOfOurBoards) {
    bus.unplug(board);
    hang.release();
    manager->scanDevices();
    EXPECT_FALSE(manager->hasDevices());
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

TEST_F(HidManagerForeignDevice, IsAskedForItsIdsOnceItLetsGoAndNeverWrittenTo) {
    manager->sendSimStatus(true);
    letGo();
    manager->sendSimStatus(false);
    manager->sendLedControl(foreignPath, -1, {1, 1, 0, 0, 0});
    manager->sendBootselCommand();
    Lines foreignCalls;
    for (const auto& call : bus.calls()) {
        if (call.path == foreignPath) {
            foreignCalls.push_back(call.text);
        }
    }
    EXPECT_EQ(foreignCalls, (Lines{"open " + foreignPath + " read-write synchronous: ok",
                                   "attributes " + foreignPath + ": ok", "close " + foreignPath}));
    EXPECT_TRUE(foreign->outputs().empty());
}

} // namespace
