#pragma once

#include "hid/hid_manager.h"
#include "simulation/boards/virtual_hid_bus.h"
#include "tests/support/fake_host.h"
#include "tests/support/log_capture.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

using Lines = std::vector<std::string>;

struct ReceivedEvent {
    HidProtocol::HidEvent event;
    std::string deviceName;
    int index = -1;

    bool operator==(const ReceivedEvent&) const = default;
};

/// Keeps what an event callback is given.
class EventRecorder {
public:
    HidEventCallback callback() {
        return [this](const HidProtocol::HidEvent& event, const std::string& deviceName, int index) {
            const std::lock_guard lock(mutex);
            received.push_back({event, deviceName, index});
        };
    }

    std::vector<ReceivedEvent> events() {
        const std::lock_guard lock(mutex);
        return received;
    }

    bool waitForCount(std::size_t count) {
        return waitUntil([&] { return events().size() >= count; });
    }

private:
    std::mutex mutex;
    std::vector<ReceivedEvent> received;
};

/// A manager on a virtual bus. Its scan thread makes one pass and then sleeps until the test ends, so that passes
/// happen only where a test asks for one.
class HidFixture : public testing::Test {
public:
    HidFixture() { host.holdSleeps(); }

    ~HidFixture() override {
        end();
        EXPECT_EQ(bus.openHandleCount(), 0U);
        EXPECT_EQ(bus.misuseCount(), 0U);
    }

    static HidManagerSettings settings() {
        HidManagerSettings result;
        result.vendorIdText = "1234";
        result.productIdText = "0xABCD";
        return result;
    }

    /// A board of the settings' ids whose boardId is zeros and then `number`.
    static std::shared_ptr<VirtualBoard> makeBoard(std::uint8_t number) {
        VirtualBoardModel model;
        model.boardId = HidProtocol::BoardId{0, 0, 0, 0, 0, 0, 0, number};
        return std::make_shared<VirtualBoard>(model);
    }

    std::shared_ptr<VirtualBoard> plugNew(std::uint8_t number, std::string_view port = "port") {
        auto board = makeBoard(number);
        bus.plug(board, port);
        return board;
    }

    /// Starts, and waits until the scan thread has made its pass.
    void start(const HidManagerSettings& used = settings()) {
        std::string error;
        ASSERT_TRUE(manager->start(used, events.callback(), error));
        ASSERT_GE(host.waitForSleep(), 0);
    }

    void stop() {
        host.letSleepsPass();
        manager->stop();
    }

    /// For a test whose transport goes through members of its own: their end must come after the manager's.
    void end() {
        host.letSleepsPass();
        manager.reset();
    }

    void restart() {
        stop();
        host.holdSleeps();
        start();
    }

    /// Waits until the reader thread of the board is in a read.
    bool waitForReader(const std::shared_ptr<VirtualBoard>& board) {
        return waitUntil([&] { return bus.pendingReadCount(board) > 0; });
    }

    /// Waits until the reader thread of the board has met a failure.
    bool waitForFailedRead(const std::string& path) {
        return waitUntil([&] {
            const auto reads = bus.reads();
            return std::any_of(reads.begin(), reads.end(),
                               [&](const auto& read) { return read.text == "read " + path + ": failed"; });
        });
    }

    /// The texts of the recorded calls of that kind.
    Lines callsOf(HidCall call) {
        Lines result;
        for (const auto& record : bus.calls()) {
            if (record.call == call) {
                result.push_back(record.text);
            }
        }
        return result;
    }

    FakeHost host;
    LogCapture log;
    VirtualHidBus bus;
    EventRecorder events;
    std::unique_ptr<HidManager> manager = std::make_unique<HidManager>(bus.transport(), host.record());
};

/// 32 bytes that begin as given, in the form of the trace lines.
inline std::string reportText(const std::string& begin) {
    return begin + std::string(64 - begin.size(), '0');
}

/// Two boards, whose connection isn't part of what a test looks at.
class HidTwoBoards : public HidFixture {
public:
    void startWithBoards() {
        bus.plug(first);
        bus.plug(second);
        start();
        log.clear();
        bus.clearCalls();
    }

    std::shared_ptr<VirtualBoard> first = makeBoard(1);
    std::shared_ptr<VirtualBoard> second = makeBoard(2);
};
