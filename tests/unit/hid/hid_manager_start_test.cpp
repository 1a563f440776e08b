#include "tests/unit/hid/hid_fixture.h"

#include <system_error>

namespace {

class HidManagerStart : public HidFixture {
public:
    /// Starts with these id texts and stops again; gives the error, or "started".
    std::string startWith(const std::string& vendor, const std::string& product) {
        HidManagerSettings ids;
        ids.vendorIdText = vendor;
        ids.productIdText = product;
        std::string error;
        if (!manager->start(ids, events.callback(), error)) {
            return error;
        }
        stop();
        return "started" + error;
    }
};

} // namespace

TEST_F(HidManagerStart, RefusesEmptyVendorId) {
    EXPECT_EQ(startWith("", "ABCD"), "Invalid VID/PID");
}

TEST_F(HidManagerStart, RefusesEmptyProductId) {
    EXPECT_EQ(startWith("1234", ""), "Invalid VID/PID");
}

TEST_F(HidManagerStart, RefusesTextThatIsNoNumber) {
    EXPECT_EQ(startWith("xyz", "ABCD"), "Invalid VID/PID");
    EXPECT_EQ(startWith("1234", "xyz"), "Invalid VID/PID");
    EXPECT_EQ(startWith(" ", "ABCD"), "Invalid VID/PID");
}

TEST_F(HidManagerStart, RefusesIdAboveSixteenBits) {
    EXPECT_EQ(startWith("10000", "ABCD"), "Invalid VID/PID");
    EXPECT_EQ(startWith("1234", "0x10000"), "Invalid VID/PID");
}

TEST_F(HidManagerStart, AcceptsTheHighestId) {
    EXPECT_EQ(startWith("FFFF", "0xffff"), "started");
}

TEST_F(HidManagerStart, AcceptsIdWithOrWithoutPrefix) {
    EXPECT_EQ(startWith("1234", "abcd"), "started");
    EXPECT_EQ(startWith("0x1234", "0XABCD"), "started");
}

TEST_F(HidManagerStart, AcceptsLeadingSpaceAndStrayTail) {
    EXPECT_EQ(startWith(" 1234 usb", "ABCDxyz"), "started");
}

TEST_F(HidManagerStart, RefusesNegativeId) {
    EXPECT_EQ(startWith("-1", "ABCD"), "Invalid VID/PID");
}

TEST_F(HidManagerStart, RefusalLeavesItStopped) {
    plugNew(1);
    EXPECT_EQ(startWith("xyz", "ABCD"), "Invalid VID/PID");
    EXPECT_EQ(host.threadsStarted(), 0U);
    EXPECT_EQ(bus.callTexts(), Lines());
    EXPECT_FALSE(manager->hasDevices());
    EXPECT_EQ(log.lines(), Lines());
    start();
    EXPECT_TRUE(manager->hasDevices());
}

TEST_F(HidManagerStart, ConnectsBoardsBeforeItReturns) {
    plugNew(1);
    plugNew(2);
    std::string error;
    ASSERT_TRUE(manager->start(settings(), events.callback(), error));
    EXPECT_EQ(manager->listDevices().size(), 2U);
}

TEST_F(HidManagerStart, SecondStartIsTrueAndKeepsTheFirstCallback) {
    const auto board = plugNew(1);
    start();
    EventRecorder others;
    HidManagerSettings invalid;
    std::string error;
    EXPECT_TRUE(manager->start(invalid, others.callback(), error));
    EXPECT_EQ(error, "");
    board->press(7);
    ASSERT_TRUE(events.waitForCount(1));
    EXPECT_TRUE(others.events().empty());
    EXPECT_EQ(host.threadsStarted(), 2U);
}

TEST_F(HidManagerStart, WorksWithoutACallback) {
    const auto board = plugNew(1);
    std::string error;
    manager->setTraceEnabled(true);
    ASSERT_TRUE(manager->start(settings(), nullptr, error));
    board->press(7);
    EXPECT_TRUE(waitUntil([&] { return log.linesWith("HID IN").size() == 1; }));
}

TEST_F(HidManagerStart, ThrowsWhenTheScanThreadCanNotBeHad) {
    host.refuseThreadsAfter(0);
    std::string error;
    EXPECT_THROW(manager->start(settings(), events.callback(), error), std::system_error);
}

TEST_F(HidManagerStart, ThrowsWhenAReaderThreadCanNotBeHadAndLeaksNoHandle) {
    plugNew(1);
    host.refuseThreadsAfter(0);
    std::string error;
    EXPECT_THROW(manager->start(settings(), events.callback(), error), std::system_error);
    EXPECT_EQ(bus.openHandleCount(), 0U);
    EXPECT_FALSE(manager->hasDevices());
}

TEST_F(HidManagerStart, CanBeStoppedAfterAThreadWasRefused) {
    plugNew(1);
    host.refuseThreadsAfter(1);
    std::string error;
    EXPECT_THROW(manager->start(settings(), events.callback(), error), std::system_error);
    EXPECT_EQ(manager->listDevices().size(), 1U);
    stop();
    EXPECT_FALSE(manager->hasDevices());
}

TEST_F(HidManagerStart, ScanThreadPassesAtOnceAndThenSleepsForTheInterval) {
    auto slow = settings();
    slow.scanIntervalMs = 1234;
    std::string error;
    ASSERT_TRUE(manager->start(slow, events.callback(), error));
    EXPECT_EQ(host.waitForSleep(), 1234);
    EXPECT_EQ(callsOf(HidCall::Enumerate).size(), 2U);
    plugNew(1);
    EXPECT_FALSE(manager->hasDevices());
    EXPECT_EQ(host.nextSleep(), 1234);
    EXPECT_TRUE(manager->hasDevices());
    EXPECT_EQ(callsOf(HidCall::Enumerate).size(), 3U);
}

TEST_F(HidManagerStart, IntervalOfZeroOrBelowScansWithoutPause) {
    for (const int interval : {0, -5}) {
        auto restless = settings();
        restless.scanIntervalMs = interval;
        host.letSleepsPass();
        bus.clearCalls();
        std::string error;
        ASSERT_TRUE(manager->start(restless, events.callback(), error));
        EXPECT_TRUE(waitUntil([&] { return callsOf(HidCall::Enumerate).size() > 3; }));
        manager->stop();
        EXPECT_EQ(host.sleeps().back(), interval);
    }
}

TEST_F(HidManagerStart, StopWhenStoppedDoesNothing) {
    manager->stop();
    EXPECT_EQ(bus.callTexts(), Lines());
    EXPECT_EQ(log.lines(), Lines());
    start();
    stop();
    log.clear();
    manager->stop();
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(HidManagerStart, StopDisconnectsInTheOrderOfPaths) {
    plugNew(1, "b");
    plugNew(2, "a");
    start();
    log.clear();
    bus.clearCalls();
    stop();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000002",
                                  "[INFO] HID device disconnected: 0000000000000001"}));
    EXPECT_FALSE(manager->hasDevices());
    EXPECT_EQ(bus.openHandleCount(), 0U);
}

TEST_F(HidManagerStart, StartsAgainWithTheNextIndexesAndTheKeptSimStatus) {
    const auto board = plugNew(1);
    start();
    manager->sendSimStatus(true);
    stop();
    board->clearOutputs();
    host.holdSleeps();
    start();
    ASSERT_EQ(manager->listDevices().size(), 1U);
    EXPECT_EQ(manager->listDevices()[0].index, 1);
    ASSERT_EQ(board->outputs().size(), 1U);
    board->clearOutputs();
    manager->sendSimStatus(true);
    EXPECT_TRUE(board->outputs().empty());
}

TEST_F(HidManagerStart, TakesNewSettingsAndCallbackAfterAStop) {
    const auto board = plugNew(1);
    start();
    stop();
    EventRecorder others;
    auto elsewhere = settings();
    elsewhere.productIdText = "1";
    std::string error;
    ASSERT_TRUE(manager->start(elsewhere, others.callback(), error));
    EXPECT_FALSE(manager->hasDevices());
    manager->stop();
    ASSERT_TRUE(manager->start(settings(), others.callback(), error));
    board->press(1);
    EXPECT_TRUE(others.waitForCount(1));
    EXPECT_TRUE(events.events().empty());
}

TEST_F(HidManagerStart, DestructorStops) {
    plugNew(1);
    start();
    log.clear();
    host.letSleepsPass();
    manager.reset();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001"}));
    EXPECT_EQ(bus.openHandleCount(), 0U);
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
