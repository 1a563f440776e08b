// The session with the simulator and its module, over each way that the tested system has to a simulator.

#include "tests/system/support/bridge_test.h"

namespace {

using Texts = std::vector<std::string>;

const Texts handshake = {"MF.Clients.Add.VantrelBridgeHID", "MF.SimVars.Clear",
                         "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)"};

class Session : public BridgeTest {
protected:
    Texts texts(SimulatorRecordKind kind) { return simulator->texts(kind); }

    /// The bridge has ended by itself with the simulator, without a console.
    void expectOrderlyEnd(const std::string& reason) {
        EXPECT_EQ(bridge->process().waitForExit(), 0);
        EXPECT_EQ(bridge->countInLog("[WARN] SimConnect disconnected: " + reason), 1U);
        EXPECT_EQ(bridge->countInLog("[INFO] Simulator closed; requesting application shutdown\n"), 1U);
        EXPECT_TRUE(bridge->log().ends_with("[INFO] Application run loop stopped\n"));
        EXPECT_EQ(bridge->output(), "");
        EXPECT_EQ(reports(*boards[0], 0x11), (std::vector{reportOf({0x11, 1}), reportOf({0x11, 0})}));
    }
};

} // namespace

TEST_F(Session, CarriesCommandsEventsAndLightsAfterItsHandshake) {
    ASSERT_NO_FATAL_FAILURE(startSession());
    EXPECT_EQ(texts(SimulatorRecordKind::Opened), Texts{"VantrelBridgeHID"});
    EXPECT_EQ(texts(SimulatorRecordKind::Command), handshake);
    EXPECT_EQ(texts(SimulatorRecordKind::Subscribed),
              (Texts{"ELECTRICAL MASTER BATTERY:2", "MobiFlight.Response", "MobiFlight.LVars"}));

    UhidBoard& board = *boards[0];
    for (int press = 0; press < 2; ++press) {
        board.panel.press(commandButton);
        board.panel.press(eventButton);
    }
    EXPECT_TRUE(simulator->waitFor(SimulatorRecordKind::ClientEvent, "AP_MASTER", 2));
    EXPECT_TRUE(simulator->waitFor(SimulatorRecordKind::Executed, buttonCommand, 2));
    EXPECT_EQ(texts(SimulatorRecordKind::Executed).size(), 2U);

    EXPECT_TRUE(waitForReport(board, reportOf({0x10, 2, 0, 5, 0xE8, 0x03, 50})));
    simulator->command("battery on");
    simulator->command("lvar LIGHTING_POTENTIOMETER_5 0.25");
    EXPECT_TRUE(waitForReport(board, reportOf({0x10, 1, 25})));
    EXPECT_EQ(texts(SimulatorRecordKind::Exception), Texts{});
}

TEST_F(Session, ThatIsDroppedIsOpenedAnew) {
    ASSERT_NO_FATAL_FAILURE(startSession());
    // The module's answers reach only those who haven't received the very same text last: another client gets one
    // between.
    simulator->command("respond MF.Pong");
    simulator->command("drop");
    ASSERT_TRUE(bridge->waitForLog("MobiFlight client registered", 2));
    EXPECT_EQ(bridge->countInLog("[WARN] SimConnect disconnected: dispatch error 0x"), 1U);
    EXPECT_TRUE(pressWorks(*boards[0]));
    EXPECT_EQ(texts(SimulatorRecordKind::Command).size(), 2 * handshake.size());
    EXPECT_EQ(reports(*boards[0], 0x11), (std::vector{reportOf({0x11, 1}), reportOf({0x11, 0}), reportOf({0x11, 1})}));

    // The log mentions only once that there is no client library.
    const bool onItsOwn = TestedSystem::isWindows() && !TestedSystem::hasDll();
    EXPECT_EQ(bridge->countInLog("[WARN] There is no SimConnect.dll beside the program or in the system folder; "
                                 "using the built-in SimConnect client\n"),
              onItsOwn ? 1U : 0U);
    EXPECT_EQ(bridge->countInLog("built-in SimConnect client"), onItsOwn ? 1U : 0U);
}

TEST_F(Session, EndsInOrderWhileTheSimulatorHangs) {
    ASSERT_NO_FATAL_FAILURE(startSession());
    simulator->command("stall on");
    boards[0]->panel.press(commandButton);
    bridge->process().writeLine("quit");
    EXPECT_EQ(bridge->process().waitForExit(), 0);
    EXPECT_TRUE(bridge->log().ends_with("[INFO] Application run loop stopped\n"));
}

TEST_F(Session, BeginsAndEndsWithTheSimulatorsProcess) {
    plugBoard(model());
    startSimulator();
    simulator->kill();
    startBridge({});
    ASSERT_TRUE(bridge->waitForLog("Waiting for flight simulator process to start\n"));
    simulator->start();
    ASSERT_TRUE(bridge->waitForLog("MobiFlight client registered"));
    EXPECT_EQ(bridge->countInLog("Flight simulator process detected\n"), 1U);
    simulator->command("quit");
    expectOrderlyEnd("SimConnect quit\n");
}

TEST_F(Session, EndsTheProcessWhenTheSimulatorCrashes) {
    ASSERT_NO_FATAL_FAILURE(startSession({}));
    simulator->kill();
    expectOrderlyEnd("dispatch error 0x");
}
