#include "tests/unit/mapping/mapping_fixture.h"

using std::string;
using std::vector;

namespace {

constexpr SimConnectResult failed = simConnectFail;

} // namespace

/// Where an event's command goes: to the module, to the simulator, or nowhere.
class EventRoutes : public MappingTest {
protected:
    void SetUp() override {
        addControl(20, "Com Swap", R"("PRESS":{"":"SWAP"},"RELEASE":{"":"LET_GO"},"HOLD":{"":"SWAP_LONG"})");
        addControl(21, "HDG", R"("CW":{"":"INC"},"CCW":{"":"DEC"},"CW_FAST":{"":"INC10"})");
        addControl(22, "MENU",
                   R"("PRESS":{"PFD":"PFD_MENU","MFD":"MFD_MENU","COPILOT":"COPILOT_MENU","DEFAULT":"MENU"})");
        addControl(23, "MUTE", R"("PRESS":{"PFD":"","DEFAULT":"MUTE"})");
        eventMap.controlIds[30] = "UNLISTED";
    }

    void start() {
        connectModule();
        ASSERT_TRUE(startEngine());
    }
};

using ModuleRoute = EventRoutes;
using EncoderRoute = EventRoutes;
using RoleOfEvent = EventRoutes;
using SimulatorRoute = EventRoutes;

// Commands for the module.

TEST_F(ModuleRoute, EachActionOfAButtonSendsItsCommand) {
    start();
    handle(button(20, 1));
    EXPECT_EQ(commandTexts(), sent({"SWAP"}));
    handle(button(20, 2));
    handle(button(20, 3));
    EXPECT_TRUE(commandTexts().size() >= 4);
    handle(button(20, 0));
    EXPECT_EQ(commandTexts().back(), "MF.DummyCmd");
    EXPECT_EQ(*(commandTexts().end() - 2), "MF.SimVars.Set.1 LET_GO");
    EXPECT_EQ(simEvents(), vector<string>{});
}

TEST_F(ModuleRoute, NamesAreComparedWithoutCaseAndSpace) {
    eventMap.controlIds[40] = " com\tSWAP ";
    start();
    handle(button(40, 1));
    EXPECT_EQ(commandTexts(), sent({"SWAP"}));
}

TEST_F(ModuleRoute, ActionWithoutCommandSendsNothing) {
    start();
    handle(button(21, 1));
    handle(button(22, 2));
    handle(button(22, 0));
    handle(encoder(20, 1));
    EXPECT_EQ(commandTexts(), vector<string>{});
    EXPECT_EQ(simEvents(), vector<string>{});
}

TEST_F(ModuleRoute, EventsWithoutActionSendNothing) {
    start();
    for (const int value : {5, 127, -128, -1})
        handle(button(20, value));
    handle(encoder(21, 0, 9));
    for (const int type : {0, 3, 4, 255})
        handle({.type = static_cast<std::uint8_t>(type), .controlId = 20, .value = 1});
    EXPECT_EQ(commandTexts(), vector<string>{});
    EXPECT_EQ(warnings(), vector<string>{});
}

TEST_F(ModuleRoute, UnknownNumberSendsNothing) {
    start();
    handle(button(999, 1));
    handle(encoder(999, 1));
    EXPECT_EQ(commandTexts(), vector<string>{});
    EXPECT_EQ(simEvents(), vector<string>{});
}

TEST_F(ModuleRoute, NameOfNothingButBlanksSendsNothing) {
    eventMap.controlIds[41] = "  ";
    eventMap.controlIds[42] = "";
    start();
    handle(button(41, 1));
    handle(button(42, 1));
    EXPECT_EQ(commandTexts(), vector<string>{});
}

TEST_F(ModuleRoute, ListedControlSendsNothingAtAllWhileTheModuleIsNotReady) {
    addControl(5, "AP", R"("PRESS":{"":"AP"})");
    connectSimulator();
    ASSERT_TRUE(startEngine());
    handle(button(5, 1));
    handle(encoder(21, 1));
    EXPECT_TRUE(log.has("[DEBUG] MobiFlight not ready; using SimConnect fallback for AP"));
    EXPECT_TRUE(log.has("[DEBUG] MobiFlight not ready; using SimConnect fallback for HDG"));
    EXPECT_EQ(writtenCount(), 0U);
    EXPECT_EQ(simEvents(), vector<string>{});
    // It isn't remembered either.
    sim.deliverText(0x1200, "MF.Clients.Add.VantrelBridgeHID.Finished", 256);
    ASSERT_TRUE(waitUntil([this] { return mobiflight.isReady() && writtenCount() == 2; }));
    EXPECT_EQ(commandTexts(), (vector<string>{"MF.SimVars.Clear", "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)"}));
}

TEST_F(ModuleRoute, FallbackLineBearsTheNameAsTheMapWritesIt) {
    eventMap.controlIds[40] = "com  Swap";
    ASSERT_TRUE(startEngine());
    handle(button(40, 1));
    EXPECT_TRUE(log.has("[DEBUG] MobiFlight not ready; using SimConnect fallback for com  Swap"));
}

TEST_F(ModuleRoute, NoFallbackLineForAnActionWithoutCommand) {
    ASSERT_TRUE(startEngine());
    handle(button(21, 1));
    EXPECT_EQ(log.linesWith("fallback"), vector<string>{});
}

TEST_F(ModuleRoute, RefusedCommandIsAWarning) {
    start();
    // A client that is told anew, switched off this time, stays ready and refuses.
    MobiFlightConfig off;
    off.enabled = false;
    string error;
    ASSERT_TRUE(mobiflight.start(&simConnect, off, error));
    handle(button(20, 1));
    EXPECT_EQ(warnings(), vector<string>{"[WARN] MobiFlight RPN send failed for Com Swap: MobiFlight disabled"});
    EXPECT_EQ(lastEventLine().find("rpn=queued"), string::npos);
    EXPECT_EQ(simEvents(), vector<string>{});
    ASSERT_TRUE(mobiflight.start(&simConnect, config.mobiflight, error) || !error.empty());
}

TEST_F(ModuleRoute, ListedControlDoesNothingWhileMobiFlightIsSwitchedOff) {
    config.mobiflight.enabled = false;
    addControl(5, "AP", R"("PRESS":{"":"AP"})");
    addControl(24, "MAP_LEFT", R"("PRESS":{"":"LEFT"})");
    connectSimulator();
    ASSERT_TRUE(startEngine());
    for (const std::uint16_t id : {std::uint16_t{5}, std::uint16_t{24}}) {
        for (const int value : {1, 2, 0})
            handle(button(id, value));
    }
    EXPECT_EQ(sim.commands(), vector<string>{});
    EXPECT_EQ(simEvents(), vector<string>{});
    EXPECT_EQ(log.linesWith("[DEBUG]").size(), 6U);
    EXPECT_EQ(warnings(), vector<string>{});
}

TEST_F(ModuleRoute, ReleaseTakesQueuedHoldAndPressOfItsControlOutOfTheQueue) {
    config.mobiflight.rpnRateLimitMs = 100;
    mobiflightHost.setNow(1);
    start();
    // The first command is in the client's hand, asleep for the rate limit; those behind it wait.
    mobiflightHost.holdSleeps();
    handle(button(22, 1));
    ASSERT_EQ(mobiflightHost.waitForSleep(), 100);
    handle(button(20, 1));
    handle(button(20, 2));
    handle(encoder(21, 1));
    handle(button(20, 0));
    mobiflightHost.letSleepsPass();
    EXPECT_EQ(commandTexts(), sent({"PFD_MENU", "INC", "LET_GO"}));
}

TEST_F(ModuleRoute, ReleaseCancelsByTheRoleOfItsEvent) {
    config.mobiflight.rpnRateLimitMs = 100;
    mobiflightHost.setNow(1);
    start();
    mobiflightHost.holdSleeps();
    handle(button(20, 1));
    ASSERT_EQ(mobiflightHost.waitForSleep(), 100);
    handle(button(22, 1, 0));
    handle(button(22, 1, 1));
    handle(button(22, 0, 1));
    mobiflightHost.letSleepsPass();
    EXPECT_EQ(commandTexts(), sent({"SWAP", "PFD_MENU"}));
}

TEST_F(ModuleRoute, HoldsOfOneCommandWaitOnceOnly) {
    config.mobiflight.rpnRateLimitMs = 100;
    mobiflightHost.setNow(1);
    start();
    mobiflightHost.holdSleeps();
    handle(button(22, 1));
    ASSERT_EQ(mobiflightHost.waitForSleep(), 100);
    for (const int value : {2, 3, 4, 2})
        handle(button(20, value));
    mobiflightHost.letSleepsPass();
    EXPECT_EQ(commandTexts(), sent({"PFD_MENU", "SWAP_LONG"}));
}

TEST_F(ModuleRoute, PressesOfOneCommandAreAllSent) {
    start();
    for (int count = 0; count < 5; ++count)
        handle(button(22, 1));
    EXPECT_EQ(commandTexts(), sent(vector<string>(5, "PFD_MENU")));
}

// Knobs.

TEST_F(EncoderRoute, DirectionChoosesTheCommand) {
    start();
    handle(encoder(21, 1));
    handle(encoder(21, -1));
    EXPECT_EQ(commandTexts(), sent({"INC", "DEC"}));
}

TEST_F(EncoderRoute, AmountIsTheLargerOfDetentsAndSpeed) {
    struct Row {
        int value;
        std::uint8_t speed;
        std::size_t amount;
    };
    start();
    // No fast command counter-clockwise.
    for (const Row& row : vector<Row>{{-1, 0, 1},
                                      {-2, 0, 2},
                                      {-1, 3, 3},
                                      {-5, 3, 5},
                                      {-3, 3, 3},
                                      {-1, 4, 4},
                                      {-127, 1, 127},
                                      {-128, 0, 128},
                                      {-128, 200, 200},
                                      {-1, 255, 255}}) {
        const std::size_t before = commandTexts().size();
        handle(encoder(21, row.value, row.speed));
        EXPECT_EQ(commandTexts().size() - before, 2 * row.amount) << row.value << " at speed " << int{row.speed};
        EXPECT_NE(lastEventLine().find(" mfAmount=" + std::to_string(row.amount) + " rpn=queued"), string::npos);
    }
}

TEST_F(EncoderRoute, FastCommandIsSentOnceFromSpeedFourOn) {
    start();
    for (const std::uint8_t speed : {std::uint8_t{4}, std::uint8_t{5}, std::uint8_t{255}}) {
        handle(encoder(21, 7, speed));
        EXPECT_NE(lastEventLine().find(" mfAmount=1 fast=1 rpn=queued"), string::npos) << lastEventLine();
    }
    EXPECT_EQ(commandTexts(), sent({"INC10", "INC10", "INC10"}));
}

TEST_F(EncoderRoute, SpeedThreeTakesTheNormalCommand) {
    start();
    handle(encoder(21, 1, 3));
    EXPECT_EQ(commandTexts(), sent({"INC", "INC", "INC"}));
}

TEST_F(EncoderRoute, WithoutFastCommandTheNormalOneIsSentSpeedTimes) {
    start();
    handle(encoder(21, -1, 4));
    EXPECT_EQ(commandTexts(), sent({"DEC", "DEC", "DEC", "DEC"}));
    EXPECT_NE(lastEventLine().find(" mfAmount=4 rpn=queued"), string::npos);
}

TEST_F(EncoderRoute, FastCommandOfAnotherRoleDoesNotCount) {
    addControl(25, "CRS", R"("CW":{"":"CRS"},"CW_FAST":{"MFD":"CRS10"})");
    start();
    handle(encoder(25, 1, 4, 0));
    handle(encoder(25, 1, 4, 1));
    EXPECT_EQ(commandTexts(), sent({"CRS", "CRS", "CRS", "CRS", "CRS10"}));
}

TEST_F(EncoderRoute, EmptyFastCommandFallsBackToTheNormalOne) {
    addControl(25, "CRS", R"("CCW":{"":"CRS"},"CCW_FAST":{"":""})");
    start();
    handle(encoder(25, -1, 6));
    EXPECT_EQ(commandTexts(), sent(vector<string>(6, "CRS")));
}

TEST_F(EncoderRoute, FastCommandAloneServesFastTurnsOnly) {
    addControl(25, "CRS", R"("CCW_FAST":{"":"CRS10"})");
    start();
    handle(encoder(25, -1, 3));
    handle(encoder(25, -1, 4));
    EXPECT_EQ(commandTexts(), sent({"CRS10"}));
}

TEST_F(EncoderRoute, FastShowsInTheLineOfAModuleThatIsNotReady) {
    ASSERT_TRUE(startEngine());
    handle(encoder(21, 1, 4));
    EXPECT_NE(lastEventLine().find(" mode=0 fast=1"), string::npos);
    EXPECT_EQ(lastEventLine().find("mfAmount"), string::npos);
}

TEST_F(EncoderRoute, SpeedOfAButtonIsIgnored) {
    start();
    HidProtocol::HidEvent press = button(22, 1);
    press.speed = 9;
    handle(press);
    EXPECT_EQ(commandTexts(), sent({"PFD_MENU"}));
    EXPECT_EQ(lastEventLine().find("mfAmount"), string::npos);
}

// The role.

TEST_F(RoleOfEvent, BoardsModeChoosesTheRole) {
    start();
    handle(button(22, 1, 0));
    handle(button(22, 1, 1));
    EXPECT_EQ(commandTexts(), sent({"PFD_MENU", "MFD_MENU"}));
}

TEST_F(RoleOfEvent, BoardsModeOutranksTheConfiguredRole) {
    config.outputs.devices = {{"B", -1, "MFD", ""}};
    start();
    handle(button(22, 1, 0));
    EXPECT_EQ(commandTexts(), sent({"PFD_MENU"}));
}

TEST_F(RoleOfEvent, OtherModesLeaveItToTheConfiguration) {
    config.outputs.devices = {{"B", -1, " coPilot", ""}, {"", 4, "mfd", ""}};
    start();
    for (const std::uint8_t mode : {std::uint8_t{2}, std::uint8_t{7}, std::uint8_t{255}})
        handle(button(22, 1, mode));
    handle(button(22, 1, 7), "C", 4);
    EXPECT_EQ(commandTexts(), sent({"COPILOT_MENU", "COPILOT_MENU", "COPILOT_MENU", "MFD_MENU"}));
}

TEST_F(RoleOfEvent, UnknownBoardInAnotherModeTakesTheDefault) {
    config.outputs.devices = {{"C", -1, "MFD", ""}};
    start();
    handle(button(22, 1, 7));
    EXPECT_EQ(commandTexts(), sent({"MENU"}));
    EXPECT_EQ(lastEventLine().find("role="), string::npos);
}

TEST_F(RoleOfEvent, RoleWithoutCommandOfItsOwnTakesTheDefault) {
    config.outputs.devices = {{"B", -1, "JUMPSEAT", ""}};
    start();
    handle(button(22, 1, 7));
    EXPECT_EQ(commandTexts(), sent({"MENU"}));
}

TEST_F(RoleOfEvent, EmptyCommandOfARoleSilencesItForThatRole) {
    start();
    handle(button(23, 1, 0));
    handle(button(23, 1, 1));
    EXPECT_EQ(commandTexts(), sent({"MUTE"}));
}

// Events of the simulator.

TEST_F(SimulatorRoute, PressOfAnUnlistedControlFiresItsEventOnce) {
    eventMap.controlIds[5] = "AP_MASTER";
    start();
    handle(button(5, 1));
    EXPECT_NE(lastEventLine().find(" mode=0 simEvent=sent"), string::npos);
    handle(button(5, 0));
    handle(button(5, 2));
    EXPECT_EQ(simEvents(), (vector<string>{"MapClientEventToSimEvent(h1, 1, \"AP_MASTER\")",
                                           "TransmitClientEvent(h1, 0, 1, 0, 1, 16)"}));
    EXPECT_EQ(commandTexts(), vector<string>{});
}

TEST_F(SimulatorRoute, TableHoldsNineControlsAndItsGaps) {
    const std::map<std::uint16_t, string> rows = {
        {5, "AP_MASTER"},   {6, "TOGGLE_FLIGHT_DIRECTOR"}, {7, "AP_HDG_HOLD"}, {8, "AP_ALT_HOLD"}, {9, "AP_NAV1_HOLD"},
        {11, "AP_BC_HOLD"}, {12, "AP_APR_HOLD"},           {13, "AP_VS_HOLD"}, {16, "AP_FLC"},
    };
    connectSimulator();
    ASSERT_TRUE(startEngine());
    vector<string> expected;
    for (std::uint16_t id = 0; id < 20; ++id) {
        handle(button(id, 1));
        const auto row = rows.find(id);
        if (row == rows.end())
            continue;
        const string number = std::to_string(expected.size() / 2 + 1);
        expected.push_back("MapClientEventToSimEvent(h1, " + number + ", \"" + row->second + "\")");
        expected.push_back("TransmitClientEvent(h1, 0, " + number + ", 0, 1, 16)");
    }
    EXPECT_EQ(simEvents(), expected);
}

TEST_F(SimulatorRoute, ServesAControlThatHasNoName) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    handle(button(16, 1));
    EXPECT_EQ(simEvents().size(), 2U);
    EXPECT_EQ(lastEventLine(), "[DEBUG] HID event from B index=0 type=1 action=BUTTON_PRESS role=PFD(BUTTON) "
                               "controlId=16 value=1 speed=0 mode=0 simEvent=sent");
}

TEST_F(SimulatorRoute, ServesWhateverTheModuleDoes) {
    config.mobiflight.enabled = false;
    connectSimulator();
    ASSERT_TRUE(startEngine());
    handle(button(6, 1));
    EXPECT_EQ(simEvents().size(), 2U);
}

TEST_F(SimulatorRoute, ServesAMapButtonThatIsNotListed) {
    eventMap.controlIds[7] = "MAP_RIGHT";
    start();
    handle(button(7, 1));
    EXPECT_EQ(simEvents().size(), 2U);
    EXPECT_EQ(warnings(), vector<string>{});
}

TEST_F(SimulatorRoute, KnobOfTheSameNumberFiresNothing) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    handle(encoder(5, 1));
    handle({.type = 4, .controlId = 5, .value = 1});
    EXPECT_EQ(simEvents(), vector<string>{});
}

TEST_F(SimulatorRoute, ListedControlWithoutPressCommandFiresNothing) {
    addControl(5, "AP", R"("RELEASE":{"":"X"})");
    start();
    handle(button(5, 1));
    EXPECT_EQ(simEvents(), vector<string>{});
}

TEST_F(SimulatorRoute, SilentWithoutASession) {
    ASSERT_TRUE(startEngine());
    handle(button(5, 1));
    EXPECT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(lastEventLine().find("simEvent"), string::npos);
}

TEST_F(SimulatorRoute, FailedTransmissionIsAWarningAndIsNotRepeated) {
    sim.script(SimCall::TransmitClientEvent, {failed});
    connectSimulator();
    ASSERT_TRUE(startEngine());
    handle(button(5, 1));
    EXPECT_EQ(warnings(), vector<string>{"[WARN] SimConnect send failed for AP_MASTER: "
                                         "SimConnect_TransmitClientEvent failed (0x80004005)"});
    EXPECT_EQ(lastEventLine().find("simEvent"), string::npos);
    handle(button(5, 1));
    EXPECT_NE(lastEventLine().find("simEvent=sent"), string::npos);
    EXPECT_EQ(sim.count(SimCall::TransmitClientEvent), 2U);
}

TEST_F(SimulatorRoute, FailedMappingIsAWarning) {
    sim.script(SimCall::MapClientEventToSimEvent, {failed});
    connectSimulator();
    ASSERT_TRUE(startEngine());
    handle(button(13, 1));
    EXPECT_EQ(warnings(), vector<string>{"[WARN] SimConnect send failed for AP_VS_HOLD: "
                                         "SimConnect_MapClientEventToSimEvent failed (0x80004005)"});
}
