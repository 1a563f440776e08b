#include "tests/unit/mapping/mapping_fixture.h"

using std::string;
using std::vector;

/// The output worker, from requests to what the boards get. Requests act at once unless a test sets a debounce.
class OutputDriverTest : public MappingTest {
protected:
    /// Starts everything and connects `board`.
    void start() {
        startHid();
        ASSERT_TRUE(startEngine());
        board = connectBoard(1);
    }

    std::shared_ptr<VirtualBoard> connectBoard(std::uint8_t number) {
        auto connected = plugBoard(number);
        hid.scanDevices();
        return connected;
    }

    void setBattery(bool on) {
        {
            const std::lock_guard lock(simState.mutex);
            simState.batteryKnown = true;
            simState.batteryOn = on;
        }
        engine.requestOutputUpdate();
    }

    void setConnected(bool connected) {
        engine.simConnected = connected;
        engine.requestOutputUpdate();
    }

    /// The lights that a board was sent, in order.
    static vector<LedCommand> lights(const VirtualBoard& from) {
        vector<LedCommand> result;
        for (const BoardOutput& output : from.outputs()) {
            const auto& bytes = output.bytes;
            if (bytes.size() >= 7 && bytes[0] == HidProtocol::ledCtlReportId) {
                const auto periodMs = static_cast<std::uint16_t>(bytes[4] | (bytes[5] << 8));
                result.push_back({bytes[1], bytes[2], bytes[3], periodMs, bytes[6]});
            }
        }
        return result;
    }

    static bool waitForLights(const VirtualBoard& from, const vector<LedCommand>& expected) {
        waitUntil([&] { return lights(from).size() >= expected.size(); });
        EXPECT_EQ(lights(from), expected);
        return lights(from) == expected;
    }

    std::shared_ptr<VirtualBoard> board;
};

using OutputRefresh = OutputDriverTest;
using OutputDebounce = OutputDriverTest;
using OutputPush = OutputDriverTest;
using OutputPause = OutputDriverTest;
using BacklightText = OutputDriverTest;

TEST_F(OutputRefresh, BringsBoardsUpToDateOnceASecondWithoutARequest) {
    // A request would wait for this; the refresh doesn't.
    config.outputs.debounceMs = 3600 * 1000;
    const auto before = std::chrono::steady_clock::now();
    start();
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(900));
    auto late = connectBoard(2);
    engine.simConnected = true;
    EXPECT_TRUE(waitUntil([&] { return !lights(*late).empty() && lights(*late).back() == steady(80); }));
    EXPECT_EQ(lights(*board), (vector<LedCommand>{disconnectedFlash, steady(80)}));
}

TEST_F(OutputDebounce, EachRequestPostponesThePushUntilAllHasBeenQuiet) {
    config.outputs.debounceMs = 10;
    engineHost.setNow(0);
    start();
    engine.simConnected = true;
    for (std::int64_t step = 0; step < 100; ++step) {
        engineHost.setNow(step * 9 * msNs);
        engine.onBacklightPayload(std::to_string(static_cast<double>(step) / 100.0));
    }
    engineHost.setNow((99 * 9 + 10) * msNs - 1);
    ASSERT_TRUE(waitForClockReads(OutputWorker, 4));
    EXPECT_EQ(lights(*board), vector<LedCommand>{});
    engineHost.setNow((99 * 9 + 10) * msNs);
    EXPECT_TRUE(waitForLights(*board, {steady(99)}));
}

TEST_F(OutputDebounce, BelowZeroPushesAtOnce) {
    config.outputs.debounceMs = -50;
    engineHost.setNow(7);
    start();
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
}

TEST_F(OutputDebounce, StopDuringItStillPushesOnce) {
    config.outputs.debounceMs = 3600 * 1000;
    start();
    const std::size_t before = clockReads(OutputWorker);
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitUntil([&] { return clockReads(OutputWorker) > before; }));
    engine.stop();
    EXPECT_EQ(lights(*board), vector<LedCommand>{disconnectedFlash});
}

TEST_F(OutputDebounce, StopWithoutARequestPushesNothing) {
    start();
    ASSERT_TRUE(waitUntil([this] { return clockReads(OutputWorker) > 0; }));
    engine.stop();
    EXPECT_EQ(lights(*board), vector<LedCommand>{});
}

TEST_F(OutputDebounce, RequestOfAStoppedEngineIsServedByTheNextStart) {
    // The clock stays where it is, so there is no refresh.
    engineHost.setNow(0);
    startHid();
    board = connectBoard(1);
    engine.requestOutputUpdate();
    ASSERT_TRUE(startEngine());
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
}

TEST_F(OutputPush, FollowsSessionBatteryAndBacklightAndWritesALightOnce) {
    start();
    vector<LedCommand> expected;
    const auto expectNext = [&](const LedCommand& next) {
        expected.push_back(next);
        EXPECT_TRUE(waitForLights(*board, expected));
    };
    setBattery(true);
    expectNext(disconnectedFlash);
    setConnected(true);
    setBattery(true);
    expectNext(steady(80));
    engine.onBacklightPayload("0.5");
    expectNext(steady(50));
    setBattery(false);
    expectNext(batteryBreathe);
}

TEST_F(OutputPush, SkipsBoardsWithoutAnyProfile) {
    config.outputs.profiles.clear();
    start();
    const std::size_t before = clockReads(OutputWorker);
    engine.requestOutputUpdate();
    // It came past the board, whose pause it looked for, and to its next wait.
    ASSERT_TRUE(waitUntil([&] { return clockReads(OutputWorker) >= before + 2; }));
    engine.stop();
    EXPECT_EQ(lights(*board), vector<LedCommand>{});
    EXPECT_EQ(warnings(), vector<string>{});
}

TEST_F(OutputPause, KeepsTheWorkerOffItsBoardAloneForAWhile) {
    engineHost.setNow(0);
    start();
    auto other = connectBoard(2);
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*other, {disconnectedFlash}));
    board->notice();
    ++submitted;
    ASSERT_TRUE(drain());
    engineHost.setNow(1500 * msNs - 1);
    setConnected(true);
    ASSERT_TRUE(waitForLights(*other, {disconnectedFlash, steady(80)}));
    EXPECT_EQ(lights(*board), vector<LedCommand>{disconnectedFlash});
    engineHost.setNow(1500 * msNs);
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash, steady(80)}));
}

TEST_F(OutputPause, OfANoticeWithoutANameIsThatOfTheBoardOfItsNumber) {
    engineHost.setNow(0);
    start();
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*board, {disconnectedFlash}));
    handle(notice(), "", 0);
    engine.requestOutputUpdate();
    // The light is written anew, although it never changed.
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash, disconnectedFlash}));
}

TEST_F(OutputPause, SurvivesAStopOfTheEngine) {
    engineHost.setNow(0);
    start();
    auto witness = connectBoard(2);
    handle(notice(), "0000000000000001", 0);
    engine.stop();
    ASSERT_TRUE(startEngine());
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*witness, {disconnectedFlash}));
    EXPECT_EQ(lights(*board), vector<LedCommand>{});
}

TEST_F(BacklightText, IsStoredAndLoggedWithSixDecimals) {
    ASSERT_TRUE(startEngine());
    for (const auto& [text, shown] : {std::pair{"(L:LIGHTING_POTENTIOMETER_5)=0.75;", "0.750000"},
                                      {"1e-9", "0.000000"},
                                      {"inf", "inf"},
                                      {"-0.1234567", "-0.123457"}}) {
        engine.onBacklightPayload(text);
        EXPECT_EQ(log.lines().back(), string("[DEBUG] State update: backlight LIGHTING_POTENTIOMETER_5=") + shown);
    }
    {
        const std::lock_guard lock(simState.mutex);
        EXPECT_TRUE(simState.backlightKnown);
        EXPECT_EQ(simState.backlightValue, -0.1234567);
    }
    config.extensions.lightVariable = "(A:LIGHT POTENTIOMETER:3, percent)";
    engine.onBacklightPayload("1");
    EXPECT_EQ(log.lines().back(), "[DEBUG] State update: backlight (A:LIGHT POTENTIOMETER:3, percent)=1.000000");
}

TEST_F(BacklightText, UnreadableOneIsAWarningIfItHasTheName) {
    ASSERT_TRUE(startEngine());
    vector<string> expected;
    for (const string text : {"LIGHTING_POTENTIOMETER_5=abc", "(L:LIGHTING_POTENTIOMETER_5)=1e999;"}) {
        engine.onBacklightPayload(text);
        expected.push_back("[WARN] Backlight LVar payload received but could not be parsed: " + text);
    }
    for (const char* text : {"", "LIGHTING_POTENTIOMETER_", "lighting_potentiometer_5=abc", "OTHER=1"}) {
        engine.onBacklightPayload(text);
    }
    EXPECT_EQ(log.lines(), expected);
    const std::lock_guard lock(simState.mutex);
    EXPECT_FALSE(simState.backlightKnown);
}
