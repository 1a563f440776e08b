#include "tests/unit/mapping/output_fixture.h"

using std::string;
using std::vector;

using OutputRefresh = OutputTest;
using OutputState = OutputTest;
using OutputDebounce = OutputTest;
using OutputProfileChoice = OutputTest;

TEST_F(OutputRefresh, BringsBoardsUpToDateWithoutARequest) {
    const auto before = std::chrono::steady_clock::now();
    start();
    auto board = connectBoard(1);
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(900));
    // One that comes later learns it from the next refresh.
    auto late = connectBoard(2);
    EXPECT_TRUE(waitForLights(*late, {disconnectedFlash}));
    EXPECT_EQ(lights(*board).size(), 1U);
}

TEST_F(OutputRefresh, IsNotDebounced) {
    config.outputs.debounceMs = 3600 * 1000;
    start();
    auto board = connectBoard(1);
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
}

TEST_F(OutputRefresh, TakesUpWhatChangedWithoutARequest) {
    start();
    auto board = connectBoard(1);
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*board, {disconnectedFlash}));
    engine.simConnected = true;
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash, steady(80)}));
}

TEST_F(OutputState, FollowsSessionBatteryAndBacklight) {
    start();
    auto board = connectBoard(1);
    vector<LedCommand> expected;
    const auto expectNext = [&](const LedCommand& next) {
        expected.push_back(next);
        EXPECT_TRUE(waitForLights(*board, expected));
    };
    engine.requestOutputUpdate();
    expectNext(disconnectedFlash);
    setConnected(true);
    expectNext(steady(80));
    setBacklight(0.5);
    expectNext(steady(50));
    setBattery(false);
    expectNext(batteryBreathe);
    setBattery(true);
    expectNext(steady(50));
    setConnected(false);
    expectNext(disconnectedFlash);
    // What was known survives the session.
    setConnected(true);
    expectNext(steady(50));
}

TEST_F(OutputState, SessionComesBeforeTheBattery) {
    start();
    auto board = connectBoard(1);
    setBattery(true);
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
    setBattery(false);
    setConnected(true);
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash, batteryBreathe}));
}

TEST_F(OutputState, RepeatedRequestsWriteNothing) {
    start();
    auto board = connectBoard(1);
    auto witness = connectBoard(2);
    for (int count = 0; count < 20; ++count)
        engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*witness, {disconnectedFlash}));
    EXPECT_EQ(lights(*board), vector<LedCommand>{disconnectedFlash});
}

TEST_F(OutputState, ReplacedBoardIsToldAnew) {
    start();
    auto board = connectBoard(1);
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*board, {disconnectedFlash}));
    bus.unplug(board);
    hid.scanDevices();
    bus.plug(board);
    hid.scanDevices();
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash, disconnectedFlash}));
}

TEST_F(OutputState, BoardWithoutOutputDoesNotKeepTheOthersWaiting) {
    startHid();
    ASSERT_TRUE(startEngine());
    auto mute = plugBoard(1);
    HidLinkFaults faults;
    faults.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous}};
    bus.setFaults(mute, faults);
    auto board = connectBoard(2);
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
    EXPECT_EQ(lights(*mute), vector<LedCommand>{});
}

TEST_F(OutputState, FailedWriteIsTheManagersToReport) {
    start();
    auto board = plugBoard(1);
    HidLinkFaults faults;
    faults.writeError = 31;
    bus.setFaults(board, faults);
    hid.scanDevices();
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitUntil([this] { return !warnings().empty(); }));
    EXPECT_EQ(warnings(), vector<string>{"[WARN] HID led_ctl write failed for " + boardName(1) + " (err=31)"});
}

TEST_F(OutputDebounce, PushWaitsUntilRequestsHaveBeenQuiet) {
    config.outputs.debounceMs = 5;
    engineHost.setNow(0);
    start();
    auto board = connectBoard(1);
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForClockReads(OutputWorker, 4));
    EXPECT_EQ(lights(*board).size(), 0U);
    engineHost.setNow(4 * msNs);
    engine.requestOutputUpdate();
    engineHost.setNow(9 * msNs - 1);
    ASSERT_TRUE(waitForClockReads(OutputWorker, 4));
    EXPECT_EQ(lights(*board).size(), 0U);
    engineHost.setNow(9 * msNs);
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
}

TEST_F(OutputDebounce, StreamOfRequestsPostponesThePushWithoutLimit) {
    config.outputs.debounceMs = 10;
    engineHost.setNow(0);
    start();
    auto board = connectBoard(1);
    engine.simConnected = true;
    for (int step = 0; step < 100; ++step) {
        engineHost.setNow(step * 9 * msNs);
        setBacklight(step / 100.0);
    }
    ASSERT_TRUE(waitForClockReads(OutputWorker, 4));
    EXPECT_EQ(lights(*board), vector<LedCommand>{});
    engineHost.setNow((99 * 9 + 10) * msNs);
    EXPECT_TRUE(waitForLights(*board, {steady(99)}));
}

TEST_F(OutputDebounce, OfZeroOrBelowPushesAtOnce) {
    engineHost.setNow(7);
    startHid();
    std::uint8_t number = 0;
    for (const std::int32_t debounce : {0, -50}) {
        config.outputs.debounceMs = debounce;
        ASSERT_TRUE(startEngine());
        auto board = connectBoard(++number);
        engine.requestOutputUpdate();
        EXPECT_TRUE(waitForLights(*board, {disconnectedFlash})) << debounce;
        engine.stop();
    }
}

TEST_F(OutputDebounce, StopDuringItStillPushesOnce) {
    config.outputs.debounceMs = 3600 * 1000;
    start();
    auto board = connectBoard(1);
    const std::size_t before = clockReads(OutputWorker);
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitUntil([&] { return clockReads(OutputWorker) > before; }));
    engine.stop();
    EXPECT_EQ(lights(*board), vector<LedCommand>{disconnectedFlash});
}

TEST_F(OutputDebounce, StopWithoutARequestPushesNothing) {
    start();
    auto board = connectBoard(1);
    ASSERT_TRUE(waitUntil([this] { return clockReads(OutputWorker) > 0; }));
    engine.stop();
    EXPECT_EQ(lights(*board), vector<LedCommand>{});
}

TEST_F(OutputDebounce, RequestOfAStoppedEngineIsServedByTheNextStart) {
    startHid();
    auto board = connectBoard(1);
    engine.requestOutputUpdate();
    ASSERT_TRUE(startEngine());
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
}

// Whose profile.

TEST_F(OutputProfileChoice, EachBoardHasItsOwn) {
    OutputProfile bright = makeDefaultProfile();
    bright.simDisconnected = {"STEADY", 90, 0, 0, 0};
    OutputProfile dim = makeDefaultProfile();
    dim.simDisconnected = {"steady", 10, 0, 0, 0};
    config.outputs.profiles["BRIGHT"] = bright;
    config.outputs.profiles["DIM"] = dim;
    config.outputs.roleProfiles["MFD"] = "DIM";
    config.outputs.devices = {{boardName(1), -1, "", " bright"}, {"", 1, "mfd", ""}};
    start();
    auto first = connectBoard(1);
    auto second = connectBoard(2);
    auto third = connectBoard(3);
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitForLights(*first, {steady(90)}));
    EXPECT_TRUE(waitForLights(*second, {steady(10)}));
    EXPECT_TRUE(waitForLights(*third, {disconnectedFlash}));
}

TEST_F(OutputProfileChoice, MissingProfileGivesTheOneThatSortsFirst) {
    OutputProfile first = makeDefaultProfile();
    first.simDisconnected = {"STEADY", 33, 0, 0, 0};
    config.outputs.profiles["AARDVARK"] = first;
    config.outputs.devices = {{boardName(1), -1, "", "NOSUCH"}};
    start();
    auto board = connectBoard(1);
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitForLights(*board, {steady(33)}));
}

TEST_F(OutputProfileChoice, WithoutAnyProfileBoardsAreSkipped) {
    config.outputs.profiles.clear();
    start();
    auto board = connectBoard(1);
    const std::size_t before = clockReads(OutputWorker);
    engine.requestOutputUpdate();
    // It came past the board, whose pause it looked for, and to its next wait.
    ASSERT_TRUE(waitUntil([&] { return clockReads(OutputWorker) >= before + 2; }));
    engine.stop();
    EXPECT_EQ(lights(*board), vector<LedCommand>{});
    EXPECT_EQ(warnings(), vector<string>{});
}
