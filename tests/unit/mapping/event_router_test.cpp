#include "tests/unit/mapping/mapping_fixture.h"

using std::string;
using std::vector;

/// What the event worker does with a decision: the calls, their order, and the lines about them.
class EventRouterTest : public MappingTest {
protected:
    void SetUp() override {
        addControl(20, "Com Swap", R"("PRESS":{"":"SWAP"},"RELEASE":{"":"LET_GO"},"HOLD":{"":"SWAP_LONG"})");
        addControl(21, "HDG", R"("CW":{"":"INC"},"CCW":{"":"DEC"},"CW_FAST":{"":"INC10"})");
        addControl(22, "MENU", R"("PRESS":{"":"MENU"})");
        addControl(30, "MAP_LEFT", R"("PRESS":{"":"LEFT"},"HOLD":{"":"LEFT_HELD"})");
    }

    string lineAfter(const HidProtocol::HidEvent& event) {
        handle(event);
        return lastEventLine();
    }
};

TEST_F(EventRouterTest, QueuesTheCommandOfEachEventInItsAmount) {
    connectModuleAndStartEngine();
    EXPECT_NE(lineAfter(button(20, 1)).find(" mode=0 rpn=queued"), string::npos);
    EXPECT_NE(lineAfter(encoder(21, -3)).find(" mfAmount=3 rpn=queued"), string::npos);
    EXPECT_EQ(rpnSent(), (vector<string>{"SWAP", "DEC", "DEC", "DEC"}));
    EXPECT_NE(lineAfter(encoder(21, 7, 4)).find(" mfAmount=1 fast=1 rpn=queued"), string::npos);
    EXPECT_NE(lineAfter(button(20, 0)).find(" mode=0 rpn=queued"), string::npos);
    handle(button(22, 1));
    EXPECT_EQ(rpnSent(), (vector<string>{"SWAP", "DEC", "DEC", "DEC", "INC10", "LET_GO", "MENU"}));
    EXPECT_EQ(sim.count(SimCall::TransmitClientEvent), 0U);
}

TEST_F(EventRouterTest, ReleaseTakesQueuedHoldAndPressOfItsControlOutOfTheQueue) {
    limitRate();
    connectModuleAndStartEngine();
    putInFlight(button(22, 1));
    for (const auto& event : {button(20, 1), button(20, 2), encoder(21, 1), button(20, 0)}) {
        handle(event);
    }
    // Holds of one command wait once only.
    for (const int value : {2, 3, 4, 2}) {
        handle(button(20, value));
    }
    mobiflightHost.letSleepsPass();
    EXPECT_EQ(rpnSent(), (vector<string>{"MENU", "INC", "LET_GO", "SWAP_LONG"}));
}

TEST_F(EventRouterTest, CommandIsLostWhileTheModuleIsNotReady) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    clearLogOfSetUp();
    EXPECT_EQ(lineAfter(encoder(21, 1, 4)).find("mfAmount"), string::npos);
    EXPECT_EQ(log.lines().front(), "[DEBUG] MobiFlight not ready; using SimConnect fallback for HDG");
    // An action without a command is no fallback.
    handle(button(21, 1));
    EXPECT_EQ(log.lines().size(), 3U);
    EXPECT_EQ(writtenCount(), 0U);
    EXPECT_EQ(sim.count(SimCall::TransmitClientEvent), 0U);
}

TEST_F(EventRouterTest, RefusedCommandIsAWarning) {
    connectModuleAndStartEngine();
    // A client that is started again, disabled this time, stays ready and refuses.
    MobiFlightConfig off;
    off.enabled = false;
    string error;
    ASSERT_TRUE(mobiflight.start(&simConnect, off, error));
    EXPECT_EQ(lineAfter(button(20, 1)).find("rpn=queued"), string::npos);
    EXPECT_EQ(warnings(), vector<string>{"[WARN] MobiFlight RPN send failed for Com Swap: MobiFlight disabled"});
    EXPECT_NE(lineAfter(encoder(21, 2)).find(" mfAmount=2"), string::npos);
    ASSERT_TRUE(mobiflight.start(&simConnect, config.mobiflight, error) || !error.empty());
}

TEST_F(EventRouterTest, FailedSimulatorEventIsAWarningAndIsNotRepeated) {
    sim.script(SimCall::TransmitClientEvent, {simConnectFail});
    connectSimulator();
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(lineAfter(button(5, 1)).find("simEvent"), string::npos);
    EXPECT_EQ(warnings(), vector<string>{"[WARN] SimConnect send failed for AP_MASTER: "
                                         "SimConnect_TransmitClientEvent failed (0x80004005)"});
    EXPECT_NE(lineAfter(button(5, 1)).find("simEvent=sent"), string::npos);
    EXPECT_EQ(sim.count(SimCall::TransmitClientEvent), 2U);
}

TEST_F(EventRouterTest, WritesNoLineWhileDebugIsOff) {
    connectModuleAndStartEngine();
    clearLogOfSetUp();
    Logger::instance().setDebugEnabled(false);
    engine.submitEvent(button(22, 1), "B", 0);
    ASSERT_TRUE(waitUntil([this] { return writtenCount() == 2; }));
    engine.stop();
    EXPECT_EQ(log.lines(), vector<string>{});
}

TEST_F(EventRouterTest, MapPressGoesPastTheQueueAndReleaseTakesItsCommandsOutOfIt) {
    limitRate();
    connectModuleAndStartEngine();
    putInFlight(button(20, 1));
    string error;
    for (const char* command : {"LEFT", "LEFT_HELD", "LEFT", "UP"}) {
        ASSERT_TRUE(mobiflight.queueRpn(command, RpnKind::Normal, 1, error));
    }
    EXPECT_EQ(lineAfter(button(30, 1)), "[DEBUG] HID event from B index=0 type=1 action=BUTTON_PRESS role=PFD(BUTTON) "
                                        "controlId=30(MAP_LEFT) value=1 speed=0 mode=0");
    EXPECT_EQ(writtenCount(), 2U);
    handle(button(30, 0));
    mobiflightHost.letSleepsPass();
    EXPECT_EQ(rpnSent(), (vector<string>{"LEFT", "SWAP", "UP"}));
}
