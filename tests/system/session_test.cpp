// The session with the simulator and its module.

#include "tests/system/support/bridge_test.h"

namespace {

using Texts = std::vector<std::string>;

class Session : public BridgeTest {
protected:
    void startWithBoardAndSimulator(const std::vector<std::string>& arguments = {"--console"}) {
        plugBoard(model());
        startSimulator();
        startBridge(arguments);
    }

    Texts moduleCommands() { return simulator->texts(SimulatorRecordKind::Command); }
};

const Texts handshake = {"MF.Clients.Add.VantrelBridgeHID", "MF.SimVars.Clear",
                         "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)"};

} // namespace

TEST_F(Session, BeginsWithTheHandshakeInItsOrder) {
    ASSERT_NO_FATAL_FAILURE(startSession());
    EXPECT_EQ(moduleCommands(), handshake);
    EXPECT_EQ(simulator->texts(SimulatorRecordKind::Opened), Texts{"VantrelBridgeHID"});
    EXPECT_EQ(simulator->texts(SimulatorRecordKind::Subscribed),
              (Texts{"ELECTRICAL MASTER BATTERY:2", "MobiFlight.Response", "MobiFlight.LVars"}));
    EXPECT_EQ(simulator->texts(SimulatorRecordKind::Exception), Texts{});
}

TEST_F(Session, ThatIsDroppedIsOpenedAnew) {
    ASSERT_NO_FATAL_FAILURE(startSession());
    // The module's answers reach only those who haven't heard the very same text last: another client gets one between.
    simulator->command("respond MF.Pong");
    simulator->command("drop");
    ASSERT_TRUE(bridge->waitForLog("MobiFlight client registered", 2));
    EXPECT_EQ(bridge->countInLog("[WARN] SimConnect disconnected: dispatch error 0x"), 1U);
    EXPECT_EQ(bridge->countInLog("SimConnect connected\n"), 2U);
    ASSERT_TRUE(simulator->waitFor(SimulatorRecordKind::Command, handshake.back(), 2));
    EXPECT_EQ(moduleCommands().size(), 2 * handshake.size());
    boards[0]->panel.press(Controls::button);
    boards[0]->panel.press(Controls::listedNowhere);
    EXPECT_EQ(commandsUntilNow(*boards[0]), Texts{"1 (>H:BUTTON_PRESS)"});
    EXPECT_EQ(events(), Texts{"AP_MASTER"});
    EXPECT_EQ(reports(*boards[0], 0x11), (std::vector{reportOf({0x11, 1}), reportOf({0x11, 0}), reportOf({0x11, 1})}));
}

TEST_F(Session, IsToldOnceThatThereIsNoClientLibrary) {
    ASSERT_NO_FATAL_FAILURE(startSession());
    simulator->command("respond MF.Pong");
    simulator->command("drop");
    ASSERT_TRUE(bridge->waitForLog("MobiFlight client registered", 2));
    const bool onItsOwn = TestedSystem::isWindows() && !TestedSystem::hasDll();
    EXPECT_EQ(bridge->countInLog("[WARN] There is no SimConnect.dll beside the program or in the system folder; "
                                 "using the built-in SimConnect client\n"),
              onItsOwn ? 1U : 0U);
    EXPECT_EQ(bridge->countInLog("built-in SimConnect client"), onItsOwn ? 1U : 0U);
}

TEST_F(Session, WaitsForABoard) {
    startSimulator();
    startBridge();
    ASSERT_TRUE(bridge->waitForLog("Waiting for HID device to connect\n"));
    EXPECT_TRUE(simulator->texts(SimulatorRecordKind::Connected).empty());
    plugBoard(model());
    EXPECT_TRUE(bridge->waitForLog("MobiFlight client registered"));
    EXPECT_EQ(bridge->countInLog("Waiting for HID device to connect\n"), 1U);
    EXPECT_EQ(bridge->countInLog("HID device detected\n"), 1U);
}

TEST_F(Session, WaitsForTheSimulator) {
    plugBoard(model());
    startSimulator();
    simulator->kill();
    startBridge();
    ASSERT_TRUE(bridge->waitForLog("Waiting for flight simulator process to start\n"));
    simulator->startAgain();
    EXPECT_TRUE(bridge->waitForLog("MobiFlight client registered"));
    EXPECT_EQ(bridge->countInLog("Flight simulator process detected\n"), 1U);
}

TEST_F(Session, EndsInOrderWhileTheSimulatorStandsStill) {
    ASSERT_NO_FATAL_FAILURE(startSession());
    simulator->command("stall on");
    boards[0]->panel.press(Controls::button);
    bridge->process().writeLine("quit");
    EXPECT_EQ(bridge->process().waitForExit(), 0);
    EXPECT_TRUE(bridge->log().ends_with("[INFO] Application run loop stopped\n"));
}

TEST_F(Session, EndsTheProcessWhenTheSimulatorQuits) {
    startWithBoardAndSimulator({});
    ASSERT_TRUE(bridge->waitForLog("MobiFlight client registered"));
    simulator->command("quit");
    EXPECT_EQ(bridge->process().waitForExit(), 0);
    EXPECT_EQ(bridge->countInLog("[WARN] SimConnect disconnected: SimConnect quit\n"), 1U);
    EXPECT_EQ(bridge->countInLog("[INFO] Simulator closed; requesting application shutdown\n"), 1U);
    EXPECT_TRUE(bridge->log().ends_with("[INFO] Application run loop stopped\n")) << bridge->log();
    EXPECT_EQ(bridge->output(), "");
    EXPECT_EQ(reports(*boards[0], 0x11), (std::vector{reportOf({0x11, 1}), reportOf({0x11, 0})}));
}

TEST_F(Session, EndsTheProcessWhenTheSimulatorDies) {
    startWithBoardAndSimulator({});
    ASSERT_TRUE(bridge->waitForLog("MobiFlight client registered"));
    simulator->kill();
    EXPECT_EQ(bridge->process().waitForExit(), 0);
    EXPECT_EQ(bridge->countInLog("[WARN] SimConnect disconnected: dispatch error 0x"), 1U);
    EXPECT_EQ(bridge->countInLog("[INFO] Simulator closed; requesting application shutdown\n"), 1U);
    EXPECT_EQ(bridge->countInLog("[INFO] Application run loop stopped\n"), 1U);
    EXPECT_EQ(reports(*boards[0], 0x11), (std::vector{reportOf({0x11, 1}), reportOf({0x11, 0})}));
}

TEST_F(Session, SurvivesABoardThatGoesAway) {
    scanOnNewsOnly();
    ASSERT_NO_FATAL_FAILURE(startSession());
    boards[0]->unplug();
    ASSERT_TRUE(bridge->waitForLog("HID device disconnected: "));
    UhidBoard& other = plugBoard(model(2));
    ASSERT_TRUE(bridge->waitForLog("HID device connected: " + nameOf(other)));
    other.panel.press(Controls::button);
    EXPECT_EQ(commandsUntilNow(other), Texts{"1 (>H:BUTTON_PRESS)"});
    EXPECT_EQ(bridge->countInLog("SimConnect connected\n"), 1U);
}
