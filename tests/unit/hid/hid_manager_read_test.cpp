#include "tests/support/gate.h"
#include "tests/unit/hid/hid_fixture.h"

#include <atomic>
#include <functional>
#include <iostream>
#include <numeric>
#include <streambuf>
#include <string_view>
#include <thread>

namespace {

class HidManagerRead : public HidFixture {
public:
    HidManagerRead() { manager->setTraceEnabled(true); }

    void startWithBoard() {
        bus.plug(board);
        startClean();
    }
};

/// Takes the place of std::cout, and calls back on the logging thread for each trace line of an input report.
class TraceWatch : public std::streambuf {
public:
    explicit TraceWatch(std::function<void()> callback)
        : callback(std::move(callback)), before(std::cout.rdbuf(this)) {}
    ~TraceWatch() override { std::cout.rdbuf(before); }
    TraceWatch(const TraceWatch&) = delete;
    TraceWatch& operator=(const TraceWatch&) = delete;

protected:
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        if (std::string_view(text, static_cast<std::size_t>(count)).find("HID IN") != std::string_view::npos) {
            callback();
        }
        return count;
    }

private:
    const std::function<void()> callback;
    std::streambuf* const before;
};

} // namespace

TEST_F(HidManagerRead, DeliversTheSameEventWithNameAndIndexFrom32And31Bytes) {
    startWithBoard();
    const HidProtocol::HidEvent event{0x05, 2, 0x1234, -3, 4, 1, 0xBEEF};
    board->sendEvent(event);
    bus.setFaults(board, {.readsLackReportId = true});
    board->sendEvent(event);
    ASSERT_TRUE(events.waitForCount(2));
    const ReceivedEvent expected{event, firstName, 0};
    EXPECT_EQ(events.events(), (std::vector<ReceivedEvent>{expected, expected}));
    EXPECT_EQ(log.linesWith(" bytes=32 ").size(), 1U);
    EXPECT_EQ(log.linesWith(" bytes=31 ").size(), 1U);
}

TEST_F(HidManagerRead, DeliversInOrderAndTheLastReportsOfAPulledBoardToo) {
    startWithBoard();
    for (std::uint16_t control = 1; control <= 40; ++control) {
        board->press(control);
    }
    bus.unplug(board);
    ASSERT_TRUE(events.waitForCount(40));
    std::vector<int> expected(40);
    std::iota(expected.begin(), expected.end(), 1);
    EXPECT_EQ(events.controls(), expected);
}

TEST_F(HidManagerRead, DropsWhatDoesNotDecodeAndTracesAllButAnEmptyRead) {
    startWithBoard();
    board->sendRaw({});
    board->sendRaw(std::vector<std::uint8_t>{0xFF, 0x0A});
    board->sendRaw(std::vector<std::uint8_t>(30, 0x01));
    board->sendRaw(std::vector<std::uint8_t>(32, 0x02));
    board->press(0x1234, 1);
    ASSERT_TRUE(events.waitForCount(1));
    EXPECT_EQ(events.controls(), (std::vector<int>{0x1234}));
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines.front(), "[DEBUG] HID IN device=0000000000000001 bytes=2 data=FF0A");
    EXPECT_EQ(lines.back(), "[DEBUG] HID IN device=0000000000000001 bytes=32 data=" + reportText("010001003412010001"));
}

TEST_F(HidManagerRead, IsSilentUnlessTraced) {
    manager->setTraceEnabled(false);
    startWithBoard();
    board->sendRaw(std::vector<std::uint8_t>(30, 0x01));
    board->press(9);
    ASSERT_TRUE(events.waitForCount(1));
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(HidManagerRead, TraceAndEventAgreeThoughTheReadersBufferChanges) {
    // A pending read may write to the buffer at any moment; here it does while the line is being written.
    HidProtocol::Report buffer{0x01, 0, 1, 0, 7, 0, 1};
    const TraceWatch watch([&] { buffer[4] = 9; });
    log.echo();
    auto transport = bus.transport();
    transport.makeReader = [&, plain = transport.makeReader](HidHandle handle) -> HidReader {
        return [&, first = true, reader = plain(handle)](std::chrono::milliseconds limit) mutable {
            return std::exchange(first, false) ? HidReadResult{HidReadStatus::Data, buffer} : reader(limit);
        };
    };
    useTransport(transport);
    manager->setTraceEnabled(true);
    bus.plug(board);
    start();
    EXPECT_TRUE(events.waitForCount(1));
    EXPECT_EQ(buffer[4], 9);
    EXPECT_EQ(log.linesWith("HID IN"),
              (Lines{"[DEBUG] HID IN device=0000000000000001 bytes=32 data=" + reportText("01000100070001")}));
    EXPECT_EQ(events.controls(), (std::vector<int>{7}));
    end();
}

TEST_F(HidManagerRead, PulledBoardEndsTheReaderSilentlyAndKeepsTheSession) {
    startWithBoard();
    bus.unplug(board);
    ASSERT_TRUE(waitForEndedReaders(1));
    EXPECT_EQ(log.lines(), Lines());
    EXPECT_TRUE(manager->hasDevices());
    manager->scanDevices();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001"}));
}

TEST_F(HidManagerRead, IdleReaderGoesOnAfterATimeoutAndEndsWithItsSession) {
    auto transport = bus.transport();
    std::atomic<int> turns{0};
    std::atomic<std::int64_t> limitMs{0};
    std::atomic<bool> isIdle{false};
    transport.makeReader = [&, plain = transport.makeReader](HidHandle handle) -> HidReader {
        return [&, reader = plain(handle)](std::chrono::milliseconds limit) {
            limitMs = limit.count();
            return ++turns < 3 || isIdle ? HidReadResult{HidReadStatus::Timeout, {}} : reader(limit);
        };
    };
    useTransport(transport);
    startWithBoard();
    ASSERT_TRUE(waitForReader());
    EXPECT_EQ(turns, 3);
    EXPECT_EQ(limitMs, 1000);
    // From here on no cancelled read ends the reader.
    isIdle = true;
    board->press(1);
    EXPECT_TRUE(events.waitForCount(1));
    end();
}

TEST_F(HidManagerRead, SinglePendingReaderIsUsedOnlyIfAskedForAndThere) {
    std::string made;
    auto transport = bus.transport();
    const auto plain = transport.makeReader;
    transport.makeReader = [&](HidHandle handle) { return made += 'm', plain(handle); };
    transport.makeSinglePendingReader = [&](HidHandle handle) { return made += 's', plain(handle); };
    bus.plug(board);
    auto used = settings();
    const auto startWith = [&](bool singlePendingRead) {
        used.singlePendingRead = singlePendingRead;
        useTransport(transport);
        start(used);
        end();
        host.holdSleeps();
    };
    startWith(HidManagerSettings().singlePendingRead);
    startWith(true);
    // Systems whose reads need no such care have one kind only.
    transport.makeSinglePendingReader = nullptr;
    startWith(true);
    EXPECT_EQ(made, "msm");
}

TEST_F(HidManagerRead, CallbackMayCallIntoTheManager) {
    bus.plug(board);
    std::string error;
    const auto answer = [&](const HidProtocol::HidEvent&, const std::string& deviceName, int index) {
        EXPECT_TRUE(manager->sendLedControl(deviceName, index, {1, 5, 0, 0, 0}));
    };
    ASSERT_TRUE(manager->start(settings(), answer, error));
    board->press(1);
    EXPECT_TRUE(waitUntil([&] { return board->led() == LedCommand{1, 5, 0, 0, 0}; }));
}

TEST_F(HidManagerRead, DisconnectionWaitsForTheCallback) {
    bus.plug(board);
    Gate gate;
    std::atomic<bool> left{false};
    std::string error;
    const auto linger = [&](const HidProtocol::HidEvent&, const std::string&, int) {
        gate.pass();
        left = true;
    };
    ASSERT_TRUE(manager->start(settings(), linger, error));
    board->press(1);
    ASSERT_TRUE(gate.waitForArrival());
    bus.unplug(board);
    std::thread pass([&] {
        manager->scanDevices();
        EXPECT_TRUE(left);
    });
    EXPECT_TRUE(waitUntil([&] { return countCalls(HidCall::CancelReads) > 0; }));
    gate.open();
    pass.join();
    EXPECT_FALSE(manager->hasDevices());
}
