// Buttons that the module's quirks leave dead, and the extensions that cure them.

#include "tests/system/support/bridge_test.h"

namespace {

using Texts = std::vector<std::string>;

class Extensions : public BridgeTest {
protected:
    void switchOn() { configuration.extensions = R"("renewRegistration": 1, "ownChannels": 1, "lvarNumbers": 1)"; }

    /// The bridge connects to a simulator whose module starts only afterwards.
    void startModuleLate() {
        plugBoard(model());
        startSimulator({"--module-missing"});
        startBridge();
        // The registration has been written to an area that doesn't exist.
        ASSERT_TRUE(simulator->waitFor(SimulatorRecordKind::Exception, ""));
        simulator->command("module start");
    }

    /// The bridge connects a second time to a module whose answer is the same as before.
    void regainSession() {
        ASSERT_NO_FATAL_FAILURE(startSession());
        simulator->command("drop");
        ASSERT_TRUE(bridge->waitForLog("SimConnect connected\n", 2));
    }

    void expectWorkingButtons(std::size_t registrations) {
        ASSERT_TRUE(bridge->waitForLog("MobiFlight client registered", registrations));
        boards[0]->panel.press(Controls::button);
        EXPECT_EQ(commandsUntilNow(*boards[0]), Texts{"1 (>H:BUTTON_PRESS)"});
    }

    void expectDeadButtons() {
        boards[0]->panel.press(Controls::button);
        boards[0]->panel.press(Controls::listedNowhere);
        EXPECT_TRUE(bridge->waitForLog("MobiFlight not ready; using SimConnect fallback for BUTTON\n"));
        EXPECT_TRUE(simulator->waitFor(SimulatorRecordKind::ClientEvent, "AP_MASTER"));
        EXPECT_EQ(simulator->texts(SimulatorRecordKind::Executed), Texts{});
    }
};

} // namespace

TEST_F(Extensions, FindAModuleThatStartsLate) {
    switchOn();
    ASSERT_NO_FATAL_FAILURE(startModuleLate());
    expectWorkingButtons(1);
}

TEST_F(Extensions, AreNeededForAModuleThatStartsLate) {
    ASSERT_NO_FATAL_FAILURE(startModuleLate());
    expectDeadButtons();
}

TEST_F(Extensions, HearAnAnswerThatEqualsTheLast) {
    switchOn();
    ASSERT_NO_FATAL_FAILURE(regainSession());
    expectWorkingButtons(2);
}

TEST_F(Extensions, AreNeededForAnAnswerThatEqualsTheLast) {
    ASSERT_NO_FATAL_FAILURE(regainSession());
    expectDeadButtons();
}
