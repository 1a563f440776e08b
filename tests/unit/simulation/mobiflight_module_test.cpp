#include "simulation/mobiflight_module.h"

#include "tests/unit/simulation/simulator_client.h"

namespace {

using Kind = SimulatorRecordKind;
using Texts = std::vector<std::string>;
using Words = std::vector<std::uint32_t>;

constexpr std::string_view lightCode = "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)";
constexpr std::uint32_t oneHalf = 0x3F000000;
constexpr std::uint32_t one = 0x3F800000;

class MobiFlightModuleTest : public testing::Test {
protected:
    void SetUp() override {
        client.attach();
        ASSERT_TRUE(client.settle());
    }
    Texts responses() {
        EXPECT_TRUE(client.settle());
        return client.textsOf(SimulatorClient::responseRequest);
    }
    Words values(std::size_t index = 0) {
        EXPECT_TRUE(client.settle());
        return client.wordsOf(SimulatorClient::lvarsRequest, 4 * index);
    }

    RunningSimulator simulator;
    SimulatorClient client{simulator};
};

TEST_F(MobiFlightModuleTest, AnswersPingAndVersion) {
    client.command("MF.Ping");
    client.command("MF.Version.Get");
    EXPECT_EQ(responses(), (Texts{"MF.Pong", "MF.Version.1.0.1"}));
    EXPECT_EQ(simulator.texts(Kind::Command), (Texts{"MF.Ping", "MF.Version.Get"}));
}

TEST_F(MobiFlightModuleTest, AnotherClientsPingMakesAnEqualCommandAndAnswerNewsAgain) {
    client.command("MF.Version.Get");
    EXPECT_EQ(responses(), Texts{"MF.Version.1.0.1"});
    simulator.pingModule();
    client.command("MF.Version.Get");
    EXPECT_EQ(responses(), (Texts{"MF.Version.1.0.1", "MF.Pong", "MF.Version.1.0.1"}));
    EXPECT_TRUE(simulator.texts(Kind::Unchanged).empty());
}

TEST_F(MobiFlightModuleTest, IdenticalCommandIsNotSeenWithoutADummyBetween) {
    client.command("MF.SimVars.Set.1 (>K:BEACON_TOGGLE)");
    client.command("MF.SimVars.Set.1 (>K:BEACON_TOGGLE)");
    client.command("MF.DummyCmd");
    client.command("MF.SimVars.Set.1 (>K:BEACON_TOGGLE)");
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(simulator.texts(Kind::Executed), (Texts{"1 (>K:BEACON_TOGGLE)", "1 (>K:BEACON_TOGGLE)"}));
    EXPECT_EQ(simulator.texts(Kind::Dummy), Texts{"MF.DummyCmd"});
    EXPECT_EQ(simulator.texts(Kind::Unchanged), Texts{"MF.SimVars.Set.1 (>K:BEACON_TOGGLE)"});
}

TEST_F(MobiFlightModuleTest, IdenticalAnswerIsNotDelivered) {
    client.command("MF.Ping");
    client.command("MF.DummyCmd");
    client.command("MF.Ping");
    EXPECT_EQ(responses(), Texts{"MF.Pong"});
    EXPECT_EQ(simulator.texts(Kind::Command).size(), 2U);
}

TEST_F(MobiFlightModuleTest, RegistersAClientOnTheChannelItAskedOn) {
    client.command("MF.Clients.Add.VantrelBridge");
    EXPECT_EQ(responses(), Texts{"MF.Clients.Add.VantrelBridge.Finished"});
    // Its own areas exist now.
    SimulatorClient own(simulator);
    own.attach("VantrelBridge");
    own.command("MF.Ping");
    ASSERT_TRUE(own.settle());
    EXPECT_EQ(own.textsOf(SimulatorClient::responseRequest), Texts{"MF.Pong"});
    EXPECT_EQ(responses().size(), 1U);
}

TEST_F(MobiFlightModuleTest, KnownClientKeepsItsVariables) {
    client.command("MF.Clients.Add.MobiFlight");
    client.command(lightCode);
    client.command("MF.Clients.Add.MobiFlight");
    simulator.setLVar("LIGHTING_POTENTIOMETER_5", 1);
    EXPECT_EQ(values(), Words{one});
}

TEST_F(MobiFlightModuleTest, FailingModuleAnswersError) {
    simulator.failRegistrations(true);
    client.command("MF.Clients.Add.VantrelBridge");
    EXPECT_EQ(responses(), Texts{"MF.Clients.Add.VantrelBridge.Error"});
    simulator.failRegistrations(false);
    client.command("MF.DummyCmd");
    client.command("MF.Clients.Add.VantrelBridge");
    EXPECT_EQ(responses().back(), "MF.Clients.Add.VantrelBridge.Finished");
}

TEST_F(MobiFlightModuleTest, SilentModuleTakesCommandsAndSaysNothing) {
    simulator.silenceModule(true);
    client.command("MF.Ping");
    client.command("MF.SimVars.Set.1 (>K:X)");
    EXPECT_EQ(responses(), Texts());
    EXPECT_EQ(simulator.texts(Kind::Command), Texts{"MF.Ping"});
    EXPECT_EQ(simulator.texts(Kind::Executed), Texts{"1 (>K:X)"});
    simulator.silenceModule(false);
    client.command("MF.Ping");
    EXPECT_EQ(responses(), Texts{"MF.Pong"});
}

TEST_F(MobiFlightModuleTest, SilentModuleDeliversValuesWhenItSpeaksAgain) {
    client.command(lightCode);
    ASSERT_TRUE(client.settle());
    simulator.silenceModule(true);
    simulator.setLVar("LIGHTING_POTENTIOMETER_5", 0.5);
    EXPECT_EQ(values(), Words());
    simulator.silenceModule(false);
    EXPECT_EQ(values(), Words{oneHalf});
}

TEST_F(MobiFlightModuleTest, AddedVariableIsToldAtOnceUnlessItIsZero) {
    client.command(lightCode);
    EXPECT_EQ(values(), Words());
    simulator.setLVar("LIGHTING_POTENTIOMETER_5", 0.5);
    client.command("MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5, Number)");
    EXPECT_EQ(values(0), (Words{oneHalf, oneHalf}));
    EXPECT_EQ(values(1), (Words{0, oneHalf}));
}

TEST_F(MobiFlightModuleTest, ChangedVariableGoesToItsPlaceOnly) {
    client.command("MF.SimVars.Add.(L:A)");
    client.command("MF.SimVars.Add.(L:AB)");
    simulator.setLVar("Unknown", 3);
    ASSERT_TRUE(client.settle());
    simulator.setLVar("ab", 1);
    simulator.setLVar("AB", 1);
    EXPECT_EQ(values(0), Words{0});
    EXPECT_EQ(values(1), Words{one});
    EXPECT_EQ(client.messagesOf(simConnectRecvClientData).back().size(), 40U + 4096U);
}

TEST_F(MobiFlightModuleTest, CodeThatIsNoVariableIsZero) {
    simulator.setLVar("A", 1);
    client.command("MF.SimVars.Add.(A:PLANE ALTITUDE)");
    client.command("MF.SimVars.Add.(L:A) 2 *");
    client.command("MF.SimVars.Add.(L:A)");
    EXPECT_EQ(values(0), Words{0});
    EXPECT_EQ(values(2), Words{one});
}

TEST_F(MobiFlightModuleTest, ClearWritesZerosAndForgets) {
    simulator.setLVar("A", 1);
    client.command("MF.SimVars.Add.(L:A)");
    client.command("MF.SimVars.Clear");
    EXPECT_EQ(values(), (Words{one, 0}));
    simulator.setLVar("A", 0.5);
    EXPECT_EQ(values(), (Words{one, 0}));
    client.command("MF.SimVars.Add.(L:A)");
    EXPECT_EQ(values(), (Words{one, 0, oneHalf}));
}

TEST_F(MobiFlightModuleTest, MoreVariablesThanTheAreaHoldsAreDropped) {
    simulator.setLVar("A", 1);
    for (int i = 0; i < 1030; ++i) {
        client.command(i % 2 == 0 ? "MF.SimVars.Add.(L:A)" : "MF.SimVars.Add.(L:A, Bool)");
    }
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.messagesOf(simConnectRecvClientData).size(), 1024U);
}

TEST_F(MobiFlightModuleTest, ListsTheVariablesSorted) {
    simulator.setLVar("Zebra", 1);
    simulator.setLVar("alpha", 1);
    client.command("MF.LVars.List");
    EXPECT_EQ(responses(), (Texts{"MF.LVars.List.Start", "alpha", "Zebra", "MF.LVars.List.End"}));
}

TEST_F(MobiFlightModuleTest, OtherTextsHaveNoEffect) {
    client.command("MF.Config.MAX_VARS_PER_FRAME.Set.30");
    client.command("MF.SimVars.AddString.(A:TITLE, string)");
    client.command("mf.ping");
    client.command(" MF.Ping");
    client.command("");
    EXPECT_EQ(responses(), Texts());
    EXPECT_EQ(simulator.texts(Kind::Command).size(), 5U);
}

TEST_F(MobiFlightModuleTest, AnswerHasOldMemoryBehindItsZeroByte) {
    client.command("MF.Ping");
    ASSERT_TRUE(client.waitFor(simConnectRecvClientData));
    const auto message = client.messagesOf(simConnectRecvClientData).front();
    EXPECT_EQ(message[40 + 7], 0);
    EXPECT_NE(message[40 + 8], 0);
    EXPECT_NE(message.back(), 0);
}

TEST_F(MobiFlightModuleTest, TextsCanBePutIntoTheAreas) {
    simulator.setLVarsText("LIGHTING:0.5");
    simulator.respond("MF.Clients.Add.Other.Finished");
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.textsOf(SimulatorClient::lvarsRequest), Texts{"LIGHTING:0.5"});
    EXPECT_EQ(client.textsOf(SimulatorClient::responseRequest), Texts{"MF.Clients.Add.Other.Finished"});
}

TEST_F(MobiFlightModuleTest, TextTooLongForAnAreaIsCut) {
    simulator.setLVarsText(std::string(5000, 'x'));
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.textsOf(SimulatorClient::lvarsRequest), Texts{std::string(4095, 'x')});
}

TEST_F(MobiFlightModuleTest, ClientsHaveTheirOwnListsAndAreas) {
    client.command("MF.Clients.Add.Second");
    ASSERT_TRUE(client.settle());
    SimulatorClient second(simulator);
    second.attach("Second");
    second.command("MF.SimVars.Add.(L:B)");
    client.command("MF.SimVars.Add.(L:A)");
    ASSERT_TRUE(second.settle());
    ASSERT_TRUE(client.settle());
    simulator.setLVar("B", 1);
    simulator.setLVar("A", 0.5);
    ASSERT_TRUE(second.settle());
    EXPECT_EQ(second.wordsOf(SimulatorClient::lvarsRequest), Words{one});
    EXPECT_EQ(values(), Words{oneHalf});
}

TEST_F(MobiFlightModuleTest, ListOutlivesItsClientsSession) {
    client.command("MF.SimVars.Add.(L:A)");
    ASSERT_TRUE(client.settle());
    client.close();
    SimulatorClient next(simulator);
    next.attach();
    ASSERT_TRUE(next.settle());
    simulator.setLVar("A", 1);
    ASSERT_TRUE(next.settle());
    EXPECT_EQ(next.wordsOf(SimulatorClient::lvarsRequest), Words{one});
}

} // namespace
