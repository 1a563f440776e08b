// What the boards show: lights and sim status, byte for byte.

#include "tests/system/support/bridge_test.h"

namespace {

using Reports = std::vector<std::vector<std::uint8_t>>;

const std::vector<std::uint8_t> flash = reportOf({0x10, 3, 0, 4, 150, 0, 100});
const std::vector<std::uint8_t> breathe = reportOf({0x10, 2, 0, 5, 0xE8, 0x03, 50});
const std::vector<std::uint8_t> simUp = reportOf({0x11, 1});
const std::vector<std::uint8_t> simDown = reportOf({0x11, 0});

std::vector<std::uint8_t> steady(int brightness) {
    return reportOf({0x10, 1, brightness});
}

class Lights : public BridgeTest {
protected:
    /// A session with the battery on, once all that its beginning changes has reached the board.
    void startPowered() {
        ASSERT_NO_FATAL_FAILURE(startSession());
        ASSERT_TRUE(waitForLastReport(board(), breathe));
        simulator->command("battery on");
        ASSERT_TRUE(waitForLastReport(board(), steady(80)));
    }

    UhidBoard& board() { return *boards[0]; }
};

} // namespace

TEST_F(Lights, FlashWithoutASession) {
    plugBoard(model());
    startBridge();
    EXPECT_TRUE(waitForReport(board(), flash));
    EXPECT_EQ(board().panel.outputs().size(), 1U);
    killBridge();
}

TEST_F(Lights, BreatheWhileTheBatteryIsOff) {
    ASSERT_NO_FATAL_FAILURE(startPowered());
    simulator->command("battery off");
    EXPECT_TRUE(waitForLastReport(board(), breathe));
}

TEST_F(Lights, FollowTheCockpitLight) {
    ASSERT_NO_FATAL_FAILURE(startPowered());
    simulator->command("lvar LIGHTING_POTENTIOMETER_5 0.5");
    EXPECT_TRUE(waitForLastReport(board(), steady(50)));
    simulator->command("lvar LIGHTING_POTENTIOMETER_5 1");
    EXPECT_TRUE(waitForLastReport(board(), steady(100)));
    simulator->command("lvar LIGHTING_POTENTIOMETER_5 0.25");
    EXPECT_TRUE(waitForLastReport(board(), steady(25)));
}

TEST_F(Lights, OutrankTheCockpitLightByTheBattery) {
    ASSERT_NO_FATAL_FAILURE(startPowered());
    simulator->command("lvar LIGHTING_POTENTIOMETER_5 0.5");
    ASSERT_TRUE(waitForLastReport(board(), steady(50)));
    simulator->command("battery off");
    ASSERT_TRUE(waitForLastReport(board(), breathe));
    simulator->command("battery on");
    EXPECT_TRUE(waitForLastReport(board(), steady(50)));
}

TEST_F(Lights, FlashAgainWhenTheSessionIsLost) {
    ASSERT_NO_FATAL_FAILURE(startPowered());
    simulator->command("refuse on");
    simulator->command("drop");
    EXPECT_TRUE(waitForLastReport(board(), flash));
    EXPECT_TRUE(waitForLastReport(board(), simDown));
    killBridge();
}

TEST_F(Lights, GoByTheProfileOfEachBoard) {
    configuration.outputs = R"("profiles": {
        "default": {"batteryOff": {"effect": "off"}},
        "bright": {"backlight": {"mode": "fixed", "value": 93},
                   "simDisconnected": {"effect": "steady", "brightness": 7}},
        "dim": {"backlight": {"mode": "lvar", "scale": 0.5},
                "simDisconnected": {"effect": "breathe", "count": 9, "periodMs": 700, "level": 33}}
      }, "roleProfiles": {"MFD": "dim"})";
    configuration.devices = R"({"boardId": "E66138A1B2C3D401", "ledProfile": "bright"}, {"index": 1, "role": "mfd"})";
    plugBoard(model(1));
    plugBoard(model(2));
    startSimulator();
    simulator->command("battery on");
    simulator->command("lvar LIGHTING_POTENTIOMETER_5 0.5");
    startBridge();
    EXPECT_TRUE(waitForLastReport(*boards[0], steady(93)));
    EXPECT_TRUE(waitForLastReport(*boards[1], steady(25)));
    simulator->command("refuse on");
    simulator->command("drop");
    EXPECT_TRUE(waitForLastReport(*boards[0], steady(7)));
    EXPECT_TRUE(waitForLastReport(*boards[1], reportOf({0x10, 2, 0, 9, 0xBC, 0x02, 33})));
    killBridge();
}

TEST_F(Lights, AreWrittenOnceForAsLongAsTheyStay) {
    ASSERT_NO_FATAL_FAILURE(startPowered());
    const std::size_t written = board().panel.outputs().size();
    // Two of the once-a-second refreshes go by.
    std::this_thread::sleep_for(std::chrono::milliseconds(2200));
    EXPECT_EQ(board().panel.outputs().size(), written);
}

TEST_F(Lights, AreSentAgainAfterTheBoardAskedForAPause) {
    ASSERT_NO_FATAL_FAILURE(startPowered());
    const std::size_t written = reports(board(), 0x10).size();
    const auto start = std::chrono::steady_clock::now();
    board().panel.notice();
    ASSERT_TRUE(waitUntil([&] { return reports(board(), 0x10).size() > written; }, ChildProcess::defaultLimit));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1400));
    EXPECT_EQ(reports(board(), 0x10).back(), steady(80));
}

TEST_F(Lights, PauseWhileNavSwapIsHeld) {
    ASSERT_NO_FATAL_FAILURE(startPowered());
    const std::size_t written = reports(board(), 0x10).size();
    board().panel.hold(Controls::navSwap);
    EXPECT_TRUE(waitUntil([&] { return reports(board(), 0x10).size() > written; }, ChildProcess::defaultLimit));
}

TEST_F(Lights, SimStatusTellsTheSessionsBeginningAndItsEnd) {
    ASSERT_NO_FATAL_FAILURE(startSession());
    EXPECT_EQ(reports(board(), 0x11), Reports{simUp});
    bridge->process().writeLine("quit");
    EXPECT_EQ(bridge->process().waitForExit(), 0);
    EXPECT_EQ(reports(board(), 0x11), (Reports{simUp, simDown}));
    EXPECT_EQ(bridge->countInLog("SimConnect disconnected: shutdown"), 1U);
}

TEST_F(Lights, SimStatusIsTheFirstThatALaterBoardHears) {
    scanOnNewsOnly();
    ASSERT_NO_FATAL_FAILURE(startSession());
    UhidBoard& late = plugBoard(model(2));
    ASSERT_TRUE(waitUntil([&] { return late.panel.outputs().size() >= 2; }, ChildProcess::defaultLimit));
    EXPECT_EQ(late.panel.outputs()[0].bytes, simUp);
    EXPECT_EQ(late.panel.outputs()[1].bytes[0], 0x10);
}
