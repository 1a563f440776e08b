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

TEST_F(BoardEvents, EachCommandIsFollowedByTheDummy) {
    panel().press(Controls::button);
    ASSERT_TRUE(waitForRpn("(>H:BUTTON_PRESS)"));
    EXPECT_TRUE(simulator->waitFor(SimulatorRecordKind::Dummy, ""));
}

TEST_F(BoardEvents, HoldRunsItsCommand) {
    panel().press(Controls::button);
    panel().hold(Controls::button);
    EXPECT_EQ(commands(), (Texts{"1 (>H:BUTTON_PRESS)", "1 (>H:BUTTON_HOLD)"}));
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

TEST_F(BoardEvents, KnobTurnedBackRunsTheOtherCommand) {
    panel().turn(Controls::knob, -2);
    EXPECT_EQ(commands(), Texts(2, "1 (>H:KNOB_CCW)"));
}

TEST_F(BoardEvents, SpeedClassBelowTheThresholdCountsAsThatManyDetents) {
    panel().turn(Controls::knob, 1, 3);
    EXPECT_EQ(commands(), Texts(3, "1 (>H:KNOB_CW)"));
    EXPECT_TRUE(bridge->waitForLog(" value=1 speed=3 mode=0 mfAmount=3 rpn=queued\n"));
}

TEST_F(BoardEvents, FastTurnRunsTheFastCommandOnce) {
    panel().turn(Controls::knob, 2, 4);
    panel().turn(Controls::knob, -2, 9);
    EXPECT_EQ(commands(), (Texts{"1 (>H:KNOB_CW_FAST)", "1 (>H:KNOB_CCW_FAST)"}));
    EXPECT_TRUE(bridge->waitForLog(" value=2 speed=4 mode=0 mfAmount=1 fast=1 rpn=queued\n"));
}

TEST_F(BoardEvents, FastTurnWithoutAFastCommandRepeatsThePlainOne) {
    panel().turn(Controls::slowKnob, 1, 4);
    EXPECT_EQ(commands(), Texts(4, "1 (>H:SLOW_CW)"));
}

TEST_F(BoardEvents, RoleFollowsTheModeOfTheEvent) {
    panel().press(Controls::roleButton, 0);
    panel().press(Controls::roleButton, 1);
    panel().press(Controls::roleButton, 7);
    EXPECT_EQ(commands(), (Texts{"1 (>H:PFD_ROLE)", "1 (>H:MFD_ROLE)", "1 (>H:NO_ROLE)"}));
}

TEST_F(BoardEvents, PressOfAnUnlistedControlFiresItsSimulatorEvent) {
    panel().press(Controls::listedNowhere);
    panel().release(Controls::listedNowhere);
    panel().press(Controls::namedOnly);
    EXPECT_EQ(commands(), Texts{});
    EXPECT_EQ(events(), (Texts{"AP_MASTER", "AP_HDG_HOLD"}));
    EXPECT_TRUE(bridge->waitForLog("controlId=5 value=1 speed=0 mode=0 simEvent=sent\n"));
}

TEST_F(BoardEvents, ListedControlFiresNoSimulatorEvent) {
    panel().press(Controls::listedAutopilot);
    EXPECT_EQ(commands(), Texts{"1 (>H:FD_PRESS)"});
    EXPECT_EQ(events(), Texts{});
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

TEST_F(BoardEvents, UnknownEventTypesDoNothing) {
    HidProtocol::HidEvent event;
    event.type = 3;
    event.controlId = Controls::button;
    event.value = 1;
    panel().sendEvent(event);
    panel().turn(Controls::knob, 0, 5);
    EXPECT_EQ(commands(), Texts{});
    EXPECT_EQ(events(), Texts{});
}

namespace {

class BoardRoles : public BridgeTest {};

} // namespace

TEST_F(BoardRoles, ConfiguredRoleStandsWhereTheEventStatesNone) {
    configuration.devices = R"({"boardId": "0xe66138a1b2c3d401", "role": "Center"})";
    ASSERT_NO_FATAL_FAILURE(startSession());
    boards[0]->panel.press(Controls::roleButton, 7);
    boards[0]->panel.press(Controls::roleButton, 0);
    EXPECT_EQ(commandsUntilNow(*boards[0]), (Texts{"1 (>H:CENTER_ROLE)", "1 (>H:PFD_ROLE)"}));
    EXPECT_TRUE(bridge->waitForLog(" role=PFD configuredRole=Center(BUTTON) controlId=23(ROLE_BUTTON)"));
}

TEST_F(BoardRoles, DisabledModuleLeavesOnlyTheSimulatorEvents) {
    configuration.mobiflight = R"("enabled": 0)";
    plugBoard(model());
    startSimulator();
    startBridge();
    ASSERT_TRUE(bridge->waitForLog("SimConnect connected"));
    boards[0]->panel.press(Controls::button);
    boards[0]->panel.press(Controls::listedNowhere);
    EXPECT_TRUE(simulator->waitFor(SimulatorRecordKind::ClientEvent, "AP_MASTER"));
    EXPECT_EQ(simulator->texts(SimulatorRecordKind::Executed), Texts{});
    EXPECT_EQ(simulator->texts(SimulatorRecordKind::Command), Texts{});
}
