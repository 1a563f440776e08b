// What a board's buttons and knobs make the simulator do.

#include "tests/system/support/bridge_test.h"

namespace {

using Texts = std::vector<std::string>;

class BoardEvents : public BridgeTest {
protected:
    void SetUp() override { ASSERT_NO_FATAL_FAILURE(startSession()); }

    VirtualBoard& panel() { return boards[0]->panel; }
    Texts commands() { return commandsUntilNow(*boards[0]); }
};

} // namespace

TEST_F(BoardEvents, PressAndReleaseRunTheirCommandsInOrder) {
    panel().press(Controls::button);
    // A release takes back what its control has still in the queue.
    ASSERT_TRUE(waitForRpn("(>H:BUTTON_PRESS)"));
    panel().release(Controls::button);
    EXPECT_EQ(commands(), (Texts{"1 (>H:BUTTON_PRESS)", "1 (>H:BUTTON_RELEASE)"}));
}

TEST_F(BoardEvents, ManyPressesKeepTheirOrder) {
    Texts expected;
    for (int round = 0; round < 20; ++round) {
        panel().press(Controls::button);
        expected.emplace_back("1 (>H:BUTTON_PRESS)");
        panel().press(Controls::roleButton, 1);
        expected.emplace_back("1 (>H:MFD_ROLE)");
    }
    EXPECT_EQ(commands(), expected);
}

TEST_F(BoardEvents, KnobRunsItsCommandOncePerDetent) {
    panel().turn(Controls::knob, 3);
    EXPECT_EQ(commands(), Texts(3, "1 (>H:KNOB_CW)"));
}

TEST_F(BoardEvents, PressOfAnUnlistedControlFiresItsSimulatorEvent) {
    panel().press(Controls::listedNowhere);
    panel().release(Controls::listedNowhere);
    panel().press(Controls::namedOnly);
    EXPECT_EQ(commands(), Texts{});
    EXPECT_EQ(events(), (Texts{"AP_MASTER", "AP_HDG_HOLD"}));
    EXPECT_TRUE(bridge->waitForLog("controlId=5 value=1 speed=0 mode=0 simEvent=sent\n"));
}

TEST_F(BoardEvents, HeldMapButtonRepeatsUntilItsRelease) {
    panel().press(Controls::mapLeft);
    panel().hold(Controls::mapLeft);
    ASSERT_TRUE(waitForRpn("(>H:MAP_HOLD)", 5));
    panel().release(Controls::mapLeft);
    // One repeat may have been under way; from then on there is none.
    const Texts afterRelease = commands();
    EXPECT_EQ(afterRelease.front(), "1 (>H:MAP_PRESS)");
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_LE(commands().size(), afterRelease.size() + 1);
}

TEST_F(BoardEvents, ReportThatIsTooShortIsDroppedAndTheNextOneCounts) {
    // Some kernels drop it themselves, others hand it on.
    panel().sendRaw(std::vector<std::uint8_t>{HidProtocol::inputEventReportId, 0, 1, 0, Controls::button, 0, 1});
    panel().press(Controls::roleButton);
    EXPECT_EQ(commands(), Texts{"1 (>H:PFD_ROLE)"});
}
