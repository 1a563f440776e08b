#include "tests/unit/hid/hid_fixture.h"

#include <system_error>

namespace {

using Ids = std::pair<const char*, const char*>;

class HidManagerStart : public HidFixture {
public:
    /// Starts without waiting for the scan thread; gives the error, or "started".
    std::string begin(const HidManagerSettings& used = settings()) {
        std::string error;
        return manager->start(used, events.callback(), error) ? "started" + error : error;
    }
};

HidManagerSettings withIds(const std::string& vendor, const std::string& product) {
    return {.vendorIdText = vendor, .productIdText = product};
}

} // namespace

TEST_F(HidManagerStart, TakesIdsInHexadecimalWithTextAfterThem) {
    for (const auto& [vendor, product] :
         {Ids{"FFFF", "0xffff"}, Ids{"1234", "abcd"}, Ids{"0x1234", "0XABCD"}, Ids{" 1234 usb", "ABCDxyz"}}) {
        EXPECT_EQ(begin(withIds(vendor, product)), "started") << vendor << " " << product;
        stop();
    }
}

TEST_F(HidManagerStart, RefusesIdsThatAreNotNumbersOrTooLargeAndStaysStopped) {
    plugNew(1);
    for (const auto& [vendor, product] :
         {Ids{"", "ABCD"}, Ids{"1234", ""}, Ids{"xyz", "ABCD"}, Ids{"1234", "xyz"}, Ids{" ", "ABCD"},
          Ids{"10000", "ABCD"}, Ids{"1234", "0x10000"}, Ids{"-1", "ABCD"}}) {
        EXPECT_EQ(begin(withIds(vendor, product)), "Invalid VID/PID") << vendor << " " << product;
    }
    EXPECT_EQ(host.threadsStarted(), 0U);
    EXPECT_EQ(bus.callTexts(), Lines());
    EXPECT_EQ(log.lines(), Lines());
    start();
    EXPECT_TRUE(manager->hasDevices());
}

TEST_F(HidManagerStart, ConnectsBoardsBeforeItReturns) {
    plugNew(1);
    EXPECT_EQ(begin(), "started");
    EXPECT_TRUE(manager->hasDevices());
}

TEST_F(HidManagerStart, SecondStartIsTrueAndKeepsTheFirstCallback) {
    bus.plug(board);
    start();
    EventRecorder others;
    std::string error;
    EXPECT_TRUE(manager->start({}, others.callback(), error));
    EXPECT_EQ(error, "");
    board->press(7);
    ASSERT_TRUE(events.waitForCount(1));
    EXPECT_TRUE(others.events().empty());
    EXPECT_EQ(host.threadsStarted(), 2U);
}

TEST_F(HidManagerStart, WorksWithoutACallback) {
    bus.plug(board);
    std::string error;
    manager->setTraceEnabled(true);
    ASSERT_TRUE(manager->start(settings(), nullptr, error));
    board->press(7);
    EXPECT_TRUE(waitUntil([&] { return log.linesWith("HID IN").size() == 1; }));
}

TEST_F(HidManagerStart, ThrowsWhenThereIsNoScanThreadAndCanBeStopped) {
    plugNew(1);
    host.refuseThreadsAfter(1);
    EXPECT_THROW(begin(), std::system_error);
    EXPECT_EQ(manager->listDevices().size(), 1U);
    stop();
    EXPECT_FALSE(manager->hasDevices());
}

TEST_F(HidManagerStart, ScanThreadPassesAtOnceAndThenSleepsForTheInterval) {
    auto slow = settings();
    slow.scanIntervalMs = 1234;
    EXPECT_EQ(begin(slow), "started");
    EXPECT_EQ(host.waitForSleep(), 1234);
    EXPECT_EQ(countCalls(HidCall::Enumerate), 2U);
    plugNew(1);
    EXPECT_FALSE(manager->hasDevices());
    EXPECT_EQ(host.nextSleep(), 1234);
    EXPECT_TRUE(manager->hasDevices());
    EXPECT_EQ(countCalls(HidCall::Enumerate), 3U);
}

TEST_F(HidManagerStart, IntervalBelowZeroScansWithoutPause) {
    host.letSleepsPass();
    auto restless = settings();
    restless.scanIntervalMs = -5;
    EXPECT_EQ(begin(restless), "started");
    EXPECT_TRUE(waitUntil([&] { return countCalls(HidCall::Enumerate) > 3; }));
    manager->stop();
    EXPECT_EQ(host.sleeps().back(), -5);
}

TEST_F(HidManagerStart, StopDisconnectsInTheOrderOfPathsAndASecondOneDoesNothing) {
    plugNew(1, "b");
    plugNew(2, "a");
    startClean();
    stop();
    manager->stop();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000002",
                                  "[INFO] HID device disconnected: 0000000000000001"}));
    EXPECT_FALSE(manager->hasDevices());
    EXPECT_EQ(bus.openHandleCount(), 0U);
}

TEST_F(HidManagerStart, StartsAgainWithTheNextIndexesAndTheKeptSimStatus) {
    bus.plug(board);
    start();
    manager->sendSimStatus(true);
    board->clearOutputs();
    stop();
    host.holdSleeps();
    start();
    EXPECT_EQ(devices(), (Devices{{firstName, 1}}));
    manager->sendSimStatus(true);
    EXPECT_EQ(board->outputs().size(), 1U);
}

TEST_F(HidManagerStart, TakesNewSettingsAndCallbackAfterAStop) {
    bus.plug(board);
    start();
    stop();
    EventRecorder others;
    std::string error;
    ASSERT_TRUE(manager->start(withIds("1234", "1"), others.callback(), error));
    EXPECT_FALSE(manager->hasDevices());
    manager->stop();
    ASSERT_TRUE(manager->start(settings(), others.callback(), error));
    board->press(1);
    EXPECT_TRUE(others.waitForCount(1));
    EXPECT_TRUE(events.events().empty());
}

TEST_F(HidManagerStart, DestructorEndsBoardsThatAPassConnectedAfterStop) {
    start();
    stop();
    plugNew(1);
    manager->scanDevices();
    EXPECT_TRUE(manager->hasDevices());
    manager.reset();
    EXPECT_EQ(bus.openHandleCount(), 0U);
}
