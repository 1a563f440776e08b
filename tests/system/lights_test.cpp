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

TEST_F(Lights, FollowTheCockpitLight) {
    ASSERT_NO_FATAL_FAILURE(startPowered());
    simulator->command("lvar LIGHTING_POTENTIOMETER_5 0.5");
    EXPECT_TRUE(waitForLastReport(board(), steady(50)));
    simulator->command("lvar LIGHTING_POTENTIOMETER_5 1");
    EXPECT_TRUE(waitForLastReport(board(), steady(100)));
    simulator->command("lvar LIGHTING_POTENTIOMETER_5 0.25");
    EXPECT_TRUE(waitForLastReport(board(), steady(25)));
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
