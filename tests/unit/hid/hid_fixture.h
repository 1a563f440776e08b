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

// The names of the boards that makeBoard makes.
constexpr char firstName[] = "0000000000000001";
constexpr char secondName[] = "0000000000000002";

/// What keeps a board from being opened for probing and writing, or for reading. Its writes alone are refused by
/// `noWriteHandle`: the probe falls back to reading.
inline const HidLinkFaults noProbe{
    .refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous}, {HidAccess::ReadOnly, HidMode::Synchronous}}};
inline const HidLinkFaults noReadHandle{
    .refusedOpens = {{HidAccess::ReadWrite, HidMode::Overlapped}, {HidAccess::ReadOnly, HidMode::Overlapped}}};
inline const HidLinkFaults noWriteHandle{.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous}}};

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

    /// The events' control numbers, in the order of their coming.
    std::vector<int> controls() {
        std::vector<int> result;
        for (const auto& event : events()) {
            result.push_back(event.event.controlId);
        }
        return result;
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

    /// Plugs the board with these faults.
    void plugFaulty(const HidLinkFaults& faults) {
        bus.setFaults(board, faults);
        bus.plug(board);
    }

    std::shared_ptr<VirtualBoard> plugNew(std::uint8_t number, std::string_view port = "port") {
        auto plugged = makeBoard(number);
        bus.plug(plugged, port);
        return plugged;
    }

    /// Starts, and waits until the scan thread has made its pass.
    void start(const HidManagerSettings& used = settings()) {
        std::string error;
        ASSERT_TRUE(manager->start(used, events.callback(), error));
        ASSERT_GE(host.waitForSleep(), 0);
    }

    /// Starts, and forgets what was called and logged until now.
    void startClean(const HidManagerSettings& used = settings()) {
        start(used);
        bus.clearCalls();
        log.clear();
    }

    void stop() {
        host.letSleepsPass();
        manager->stop();
    }

    /// Takes another transport. If it goes through members of the test's own, the test must call `end` before they end.
    void useTransport(HidTransport transport) {
        manager = std::make_unique<HidManager>(std::move(transport), host.record());
    }
    void end() {
        host.letSleepsPass();
        manager.reset();
    }

    /// Waits until the reader thread of the board is in a read.
    bool waitForReader() {
        return waitUntil([&] { return bus.pendingReadCount(board) > 0; });
    }

    /// Waits until that many reader threads have ended; the scan thread goes on.
    bool waitForEndedReaders(std::size_t count) {
        return waitUntil([&] { return host.threadsEnded() == count; });
    }

    std::size_t countCalls(HidCall call) {
        const auto calls = bus.calls();
        return static_cast<std::size_t>(
            std::count_if(calls.begin(), calls.end(), [&](const auto& record) { return record.call == call; }));
    }

    /// Names and indexes, in the order of the list.
    std::vector<std::pair<std::string, int>> devices() {
        std::vector<std::pair<std::string, int>> result;
        for (const auto& device : manager->listDevices()) {
            result.emplace_back(device.deviceName, device.index);
        }
        return result;
    }

    FakeHost host;
    LogCapture log;
    VirtualHidBus bus;
    EventRecorder events;
    std::unique_ptr<HidManager> manager = std::make_unique<HidManager>(bus.transport(), host.record());
    /// Plugged only where a test does it, for tests of one board.
    std::shared_ptr<VirtualBoard> board = makeBoard(1);
};

/// 32 bytes that begin as given, in the form of the trace lines.
inline std::string reportText(const std::string& begin) {
    return begin + std::string(64 - begin.size(), '0');
}

using Devices = std::vector<std::pair<std::string, int>>;

/// Two boards, whose connection isn't part of what a test looks at.
class HidTwoBoards : public HidFixture {
public:
    void startWithBoards() {
        bus.plug(first);
        bus.plug(second);
        startClean();
    }

    std::shared_ptr<VirtualBoard> first = makeBoard(1);
    std::shared_ptr<VirtualBoard> second = makeBoard(2);
};
