#include "tests/support/gate.h"
#include "tests/unit/hid/hid_fixture.h"

#include <atomic>
#include <thread>

namespace {

class HidManagerThreads : public HidFixture {
public:
    HidManagerThreads() { bus.setRecording(false); }

    ~HidManagerThreads() override { joinAll(); }

    /// Has `turn` repeated on a thread of its own until `joinAll`.
    template <typename Turn>
    void repeat(Turn turn) {
        threads.emplace_back([this, turn] {
            for (int count = 0; !done; ++count) {
                turn(count);
            }
        });
    }

    void joinAll() {
        done = true;
        for (auto& thread : threads) {
            thread.join();
        }
        threads.clear();
    }

    /// Waits until a pass that the scan thread began after this call has ended.
    bool waitForWholePass() {
        const auto passes = host.sleeps().size();
        return waitUntil([&] { return host.sleeps().size() >= passes + 2; });
    }

    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
};

} // namespace

TEST_F(HidManagerThreads, BoardsComeAndGoWhileEveryOperationRuns) {
    host.letSleepsPass();
    const std::vector boards{makeBoard(0), makeBoard(1), makeBoard(2), makeBoard(3)};
    std::string error;
    ASSERT_TRUE(manager->start(settings(), events.callback(), error));
    repeat([&](int) { manager->scanDevices(); });
    repeat([&](int count) {
        for (const auto& device : manager->listDevices()) {
            manager->sendLedControl(device.deviceName, device.index, {1, static_cast<std::uint8_t>(count), 0, 0, 0});
        }
    });
    repeat([&](int count) { manager->sendSimStatus(count % 2 == 0); });
    repeat([&](int count) { manager->invalidateLedCache("", count % 8); });
    repeat([&](int count) {
        if (count % 64 == 0) {
            manager->sendBootselCommand();
        }
        std::this_thread::yield();
    });
    for (std::size_t turn = 0; turn < 150; ++turn) {
        const auto& moved = boards[turn % boards.size()];
        bus.plug(moved);
        moved->press(1);
        if (turn % 3 == 0) {
            bus.unplug(moved);
        }
        std::this_thread::yield();
    }
    joinAll();
    for (const auto& each : boards) {
        bus.plug(each);
    }
    manager->scanDevices();
    // A pass that listed the boards before they were plugged may end the sessions that this one has made. The next
    // makes them again.
    ASSERT_TRUE(waitForWholePass());
    EXPECT_EQ(manager->listDevices().size(), boards.size());
    const auto before = events.events().size();
    for (const auto& each : boards) {
        each->press(3);
    }
    EXPECT_TRUE(events.waitForCount(before + boards.size()));
}

TEST_F(HidManagerThreads, TwoStopAtOnceWhileBoardsSendAndOthersCall) {
    host.letSleepsPass();
    bus.plug(board);
    for (int turn = 0; turn < 20; ++turn) {
        done = false;
        std::string error;
        ASSERT_TRUE(manager->start(settings(), events.callback(), error));
        repeat([&](int) { board->press(1); });
        repeat([&](int count) { manager->sendLedControl("", turn, {1, static_cast<std::uint8_t>(count), 0, 0, 0}); });
        repeat([&](int) { manager->listDevices(); });
        std::thread other([&] { manager->stop(); });
        manager->stop();
        other.join();
        EXPECT_FALSE(manager->hasDevices());
        EXPECT_EQ(bus.openHandleCount(), 0U);
        joinAll();
    }
}

TEST_F(HidManagerThreads, ConcurrentPassesMakeOneSessionEach) {
    start();
    for (int turn = 0; turn < 25; ++turn) {
        bus.plug(board);
        std::vector<std::thread> passes(4);
        for (auto& pass : passes) {
            pass = std::thread([&] { manager->scanDevices(); });
        }
        for (auto& pass : passes) {
            pass.join();
        }
        const auto devices = manager->listDevices();
        ASSERT_EQ(devices.size(), 1U);
        EXPECT_EQ(devices[0].index, turn);
        bus.unplug(board);
        manager->scanDevices();
    }
}

namespace {

/// A board that doesn't accept a report before the test lets it.
class HidManagerBlockedWrite : public HidFixture {
protected:
    HidManagerBlockedWrite() {
        auto transport = bus.transport();
        transport.write = [this, plain = transport.write](HidHandle handle, std::span<const std::uint8_t> report) {
            gate.pass();
            ended = true;
            return plain(handle, report);
        };
        useTransport(transport);
        bus.plug(board);
        start();
        writer = std::thread([this] { manager->sendSimStatus(true); });
        EXPECT_TRUE(gate.waitForArrival());
    }
    ~HidManagerBlockedWrite() override {
        gate.open();
        writer.join();
        end();
    }

    Gate gate;
    std::atomic<bool> ended{false};
    std::thread writer;
};

} // namespace

TEST_F(HidManagerBlockedWrite, HoldsBackAPassUntilItEndsButNoInput) {
    bus.clearCalls();
    plugNew(2);
    std::thread pass([&] {
        manager->scanDevices();
        EXPECT_TRUE(ended);
    });
    EXPECT_TRUE(waitUntil([&] { return countCalls(HidCall::Close) == 2; }));
    board->press(5);
    EXPECT_TRUE(events.waitForCount(1));
    gate.open();
    pass.join();
    EXPECT_EQ(manager->listDevices().size(), 2U);
    EXPECT_EQ(board->simConnected(), true);
}

TEST_F(HidManagerBlockedWrite, HoldsBackAStopUntilItEnds) {
    std::thread stopper([&] {
        stop();
        EXPECT_TRUE(ended);
    });
    // Time for a stop that doesn't wait to return.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(countCalls(HidCall::CancelReads), 0U);
    gate.open();
    stopper.join();
    EXPECT_FALSE(manager->hasDevices());
}
