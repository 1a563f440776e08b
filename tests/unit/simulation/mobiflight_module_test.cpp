#include "simulation/simulator/mobiflight_module.h"

#include "tests/support/loopback_peer.h"
#include "tests/unit/simulation/simulator_client.h"

namespace {

using Kind = SimulatorRecordKind;
using Texts = std::vector<std::string>;
using Words = std::vector<std::uint32_t>;

constexpr std::string_view lightCode = "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)";
constexpr std::uint32_t oneHalf = 0x3F000000;
constexpr std::uint32_t one = 0x3F800000;

constexpr std::string_view registration = "MF.Clients.Add.VantrelBridgeHID";

// One session of a client that registers, and what it hears of the answer.
Texts registerOnce(const VirtualSimulator& simulator) {
    SimulatorClient client(simulator);
    client.attach();
    client.command("MF.DummyCmd");
    client.command(registration);
    EXPECT_TRUE(client.settle());
    return client.textsOf(SimulatorClient::responseRequest);
}

// Writes a command through a definition as wide as the area.
void commandWhole(const SimulatorClient& client, const std::string& text) {
    constexpr std::uint32_t wholeArea = 13;
    std::array<char, 1024> block{};
    text.copy(block.data(), block.size() - 1);
    SimConnect_AddToClientDataDefinition(client.get(), wholeArea, 0, block.size(), 0, simConnectUnused);
    SimConnect_SetClientData(client.get(), SimulatorClient::commandArea, wholeArea, 0, 0, block.size(), block.data());
}

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

TEST_F(MobiFlightModuleTest, AnotherClientsPingLetsAnEqualCommandAndAnswerThrough) {
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

TEST_F(MobiFlightModuleTest, AnswersSettingDecidesWhichRegistrationsAreHeard) {
    struct Case {
        ModuleAnswers answers;
        std::array<std::size_t, 3> heard;
    };
    for (const Case& one : {Case{ModuleAnswers::Equal, {1, 0, 0}}, Case{ModuleAnswers::Different, {1, 1, 1}},
                            Case{ModuleAnswers::Measured, {1, 1, 0}}}) {
        RunningSimulator fresh;
        fresh.setModuleAnswers(one.answers);
        for (const std::size_t count : one.heard) {
            EXPECT_EQ(registerOnce(fresh).size(), count) << static_cast<int>(one.answers);
        }
        fresh.pingModule();
        EXPECT_EQ(registerOnce(fresh).size(), 1U) << static_cast<int>(one.answers);
    }
}

TEST_F(MobiFlightModuleTest, DifferentAnswersAreAllHeard) {
    constexpr std::size_t moreThanAByteCounts = 300;
    simulator.setModuleAnswers(ModuleAnswers::Different);
    for (std::size_t i = 0; i < moreThanAByteCounts; ++i) {
        client.command("MF.Ping");
        client.command("MF.DummyCmd");
    }
    EXPECT_EQ(responses().size(), moreThanAByteCounts);
}

TEST_F(MobiFlightModuleTest, AreasHaveTheSizesOfTheRealOnes) {
    constexpr std::uint32_t beyondTheArea = 31;
    std::uint32_t id = 100;
    const auto setTwoBytes = [&](const char* name, std::uint32_t offset) {
        std::array<char, 2> bytes{};
        SimConnect_MapClientDataNameToID(client.get(), name, ++id);
        SimConnect_AddToClientDataDefinition(client.get(), id, offset, bytes.size(), 0, simConnectUnused);
        SimConnect_SetClientData(client.get(), id, id, 0, 0, bytes.size(), bytes.data());
        const std::size_t before = client.exceptions().size();
        EXPECT_TRUE(client.settle());
        return client.exceptions().at(before)[0];
    };
    struct Case {
        const char* name;
        std::uint32_t size;
    };
    for (const Case& one : {Case{"MobiFlight.Command", 1024}, Case{"MobiFlight.Response", 1024},
                            Case{"MobiFlight.LVars", 4096}, Case{"MobiFlight.StringVars", 8192}}) {
        EXPECT_NE(setTwoBytes(one.name, one.size - 2), beyondTheArea) << one.name;
        EXPECT_EQ(setTwoBytes(one.name, one.size - 1), beyondTheArea) << one.name;
    }
}

TEST_F(MobiFlightModuleTest, CommandIsExecutedCutWhereItsSendersDefinitionEnds) {
    const std::string longest = "MF.SimVars.Set.1 " + std::string(238, 'x');
    commandWhole(client, longest + "yz");
    client.command(longest + "yz");
    client.command("MF.DummyCmd");
    client.command(longest);
    ASSERT_TRUE(client.settle());
    const std::string cut = "1 " + std::string(238, 'x');
    EXPECT_EQ(simulator.texts(Kind::Executed), (Texts{cut + "yz", cut, cut}));
}

TEST_F(MobiFlightModuleTest, PrefixIsFoundAnywhereButCutOffTheFront) {
    client.command("xMF.SimVars.Set.1 (>K:X)");
    client.command("xxMF.Clients.Add.Second");
    simulator.setLVar("A", 1);
    client.command("MF.(L:A)MF.SimVars.Add.");
    client.command("x MF.SimVars.Add.(L:A)");
    EXPECT_EQ(responses(), Texts{"MF.Clients.Add.d.Second.Finished"});
    EXPECT_EQ(simulator.texts(Kind::Executed), Texts{".1 (>K:X)"});
    // The code of neither variable is what it was meant to be, but both have their places.
    client.command(lightCode);
    simulator.setLVar("LIGHTING_POTENTIOMETER_5", 0.5);
    EXPECT_EQ(values(2), Words{oneHalf});
}

TEST_F(MobiFlightModuleTest, ClientsHaveTheirOwnListsAndAreas) {
    client.command("MF.Clients.Add.Second");
    EXPECT_EQ(responses(), Texts{"MF.Clients.Add.Second.Finished"});
    SimulatorClient second(simulator);
    second.attach("Second");
    second.command("MF.Ping");
    second.command("MF.SimVars.Add.(L:B)");
    client.command("MF.SimVars.Add.(L:A)");
    ASSERT_TRUE(second.settle());
    ASSERT_TRUE(client.settle());
    simulator.setLVar("B", 1);
    simulator.setLVar("A", 0.5);
    ASSERT_TRUE(second.settle());
    EXPECT_EQ(second.textsOf(SimulatorClient::responseRequest), Texts{"MF.Pong"});
    EXPECT_EQ(second.wordsOf(SimulatorClient::lvarsRequest), Words{one});
    EXPECT_EQ(values(), Words{oneHalf});
    EXPECT_EQ(responses().size(), 1U);
}

TEST_F(MobiFlightModuleTest, RepeatedRegistrationIsAnsweredAgainAndKeepsTheVariables) {
    client.command("MF.Clients.Add.MobiFlight");
    client.command(lightCode);
    client.command("MF.Ping");
    client.command("MF.Clients.Add.MobiFlight");
    const std::string confirmation = "MF.Clients.Add.MobiFlight.Finished";
    EXPECT_EQ(responses(), (Texts{confirmation, "MF.Pong", confirmation}));
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

TEST_F(MobiFlightModuleTest, SilentModuleTakesCommandsAndDeliversValuesLater) {
    client.command(lightCode);
    ASSERT_TRUE(client.settle());
    simulator.silenceModule(true);
    client.command("MF.Ping");
    client.command("MF.SimVars.Set.1 (>K:X)");
    simulator.setLVar("LIGHTING_POTENTIOMETER_5", 0.5);
    EXPECT_EQ(responses(), Texts());
    EXPECT_EQ(values(), Words());
    EXPECT_EQ(simulator.texts(Kind::Command), (Texts{std::string(lightCode), "MF.Ping"}));
    EXPECT_EQ(simulator.texts(Kind::Executed), Texts{"1 (>K:X)"});
    simulator.silenceModule(false);
    client.command("MF.Ping");
    EXPECT_EQ(responses(), Texts{"MF.Pong"});
    EXPECT_EQ(values(), Words{oneHalf});
}

TEST_F(MobiFlightModuleTest, AddedVariableIsDeliveredAtOnceUnlessItIsZero) {
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

TEST_F(MobiFlightModuleTest, AircraftVariableIsDeliveredLikeALocalOne) {
    simulator.setAircraftVariable("Light Potentiometer:3", 0.5);
    client.command("MF.SimVars.Add.(A:LIGHT POTENTIOMETER:3, percent over 100)");
    EXPECT_EQ(values(), Words{oneHalf});
    simulator.setAircraftVariable("LIGHT POTENTIOMETER:2", 0.25);
    simulator.setAircraftVariable("LIGHT POTENTIOMETER:3", 1);
    EXPECT_EQ(values(), (Words{oneHalf, one}));
}

TEST_F(MobiFlightModuleTest, ValueIsWrittenWhenItChangesOnly) {
    constexpr std::uint32_t everySet = 23;
    SimConnect_RequestClientData(client.get(), SimulatorClient::lvarsArea, everySet, SimulatorClient::lvarsDefinition,
                                 3, 0, 0, 0, 0);
    client.command("MF.SimVars.Add.(L:A)");
    ASSERT_TRUE(client.settle());
    simulator.setLVar("A", 1);
    simulator.setLVar("A", 1);
    simulator.setLVar("B", 1);
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.wordsOf(everySet), (Words{0, one}));
}

TEST_F(MobiFlightModuleTest, AnotherProgramOnTheSharedChannelTakesTheFirstPlace) {
    simulator.setLVar("LIGHTING_POTENTIOMETER_5", 1);
    simulator.setLVar("OTHER", 0.5);
    client.command(lightCode);
    EXPECT_EQ(values(), Words{one});
    simulator.sendAsOtherClient("MF.SimVars.Clear");
    simulator.sendAsOtherClient("MF.SimVars.Add.(L:OTHER)");
    EXPECT_EQ(values(), (Words{one, 0, oneHalf}));
    client.command(lightCode);
    EXPECT_EQ(values(1), (Words{0, 0, 0, one}));
    EXPECT_EQ(simulator.texts(Kind::Command),
              (Texts{std::string(lightCode), "MF.SimVars.Clear", "MF.SimVars.Add.(L:OTHER)", std::string(lightCode)}));
    EXPECT_EQ(simulator.records().back().session, 1U);
}

TEST_F(MobiFlightModuleTest, StoppedModuleLeavesItsAreasAndForgetsItsClients) {
    client.command("MF.SimVars.Add.(L:A)");
    ASSERT_TRUE(client.settle());
    simulator.stopModule();
    EXPECT_FALSE(simulator.moduleRunning());
    client.command("MF.Ping");
    simulator.setLVar("A", 1);
    EXPECT_EQ(responses(), Texts());
    EXPECT_EQ(values(), Words());
    EXPECT_EQ(simulator.texts(Kind::Command), Texts{"MF.SimVars.Add.(L:A)"});
    simulator.startModule();
    client.command("MF.DummyCmd");
    client.command("MF.Ping");
    EXPECT_EQ(responses(), (Texts{"A", "MF.Pong"}));
    EXPECT_EQ(client.wordsOf(SimulatorClient::lvarsRequest), Words());
    EXPECT_EQ(client.exceptions().size(), 5U) << "only those of settling";
}

TEST_F(MobiFlightModuleTest, RunningModuleIsNotStartedAgain) {
    simulator.setLVar("A", 1);
    simulator.startModule();
    EXPECT_EQ(responses(), Texts()) << "it writes the variables' names at its start";
}

class LateModule : public testing::Test {
protected:
    RunningSimulator simulator{Transport::Tcp, {.moduleInstalled = false}};
};

TEST_F(LateModule, ClientThatAttachedBeforeHearsNothingUntilItAttachesAgain) {
    SimulatorClient client(simulator);
    client.attach();
    client.command("MF.Ping");
    ASSERT_TRUE(client.waitFor(simConnectRecvException));
    EXPECT_EQ(client.exceptions().front()[0], 31U);
    simulator.startModule();
    EXPECT_TRUE(simulator.moduleRunning());
    client.command("MF.Version.Get");
    client.command("MF.SimVars.Add.(L:A)");
    ASSERT_TRUE(client.settle());
    simulator.setLVar("A", 1);
    ASSERT_TRUE(client.settle());
    EXPECT_TRUE(client.messagesOf(simConnectRecvClientData).empty());
    EXPECT_EQ(simulator.texts(Kind::Command), (Texts{"MF.Version.Get", "MF.SimVars.Add.(L:A)"}));
    SimulatorClient again(simulator);
    again.attach();
    again.command("MF.Ping");
    ASSERT_TRUE(again.settle());
    EXPECT_EQ(again.textsOf(SimulatorClient::responseRequest), Texts{"MF.Pong"});
}

TEST_F(LateModule, IsLateInTheSimulatorsNextRunToo) {
    simulator.startModule();
    simulator.quit();
    EXPECT_FALSE(simulator.moduleRunning());
}

// A request with a name from byte 16 on, and words at its end.
PeerBytes namedRequest(std::initializer_list<std::uint32_t> header, std::string_view name,
                       std::initializer_list<std::uint32_t> tail) {
    PeerBytes request = wireWords(header);
    request.insert(request.end(), name.begin(), name.end());
    request.resize(16 + 256);
    const PeerBytes end = wireWords(tail);
    request.insert(request.end(), end.begin(), end.end());
    return request;
}

TEST_F(LateModule, TakesAnAreaAsItIsThatAClientMadeBefore) {
    const Socket maker = connectSocket("127.0.0.1", simulator.port(), AddressFamily::Ipv4, std::chrono::seconds(30));
    ASSERT_EQ(maker.send(namedRequest({296, 4, 0xF0000001, 1}, "maker", {0, 0, 0, 0, 0, 0})).count, 296U);
    ASSERT_EQ(maker.send(namedRequest({276, 4, 0xF0000037, 2}, "MobiFlight.LVars", {7})).count, 276U);
    ASSERT_EQ(maker.send(wireWords({28, 4, 0xF0000038, 3, 7, 4, 0})).count, 28U);
    // Made twice: the second time is refused, so the first is done.
    ASSERT_EQ(maker.send(wireWords({28, 4, 0xF0000038, 4, 7, 4, 0})).count, 28U);
    ASSERT_TRUE(simulator.waitForKind(Kind::Exception, 1, std::chrono::seconds(30)));
    simulator.setLVar("A", 1);
    simulator.setLVar("B", 1);
    simulator.startModule();
    SimulatorClient client(simulator);
    client.attach();
    client.command("MF.SimVars.Add.(L:A)");
    client.command("MF.SimVars.Add.(L:B)");
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.wordsOf(SimulatorClient::lvarsRequest), Words{one});
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

TEST_F(MobiFlightModuleTest, AnswerHasOldMemoryAfterItsZeroByte) {
    client.command("MF.Ping");
    ASSERT_TRUE(client.waitFor(simConnectRecvClientData));
    const auto message = client.messagesOf(simConnectRecvClientData).front();
    EXPECT_EQ(message[40 + 7], 0);
    EXPECT_NE(message[40 + 8], 0);
    EXPECT_NE(message.back(), 0);
}

TEST_F(MobiFlightModuleTest, TextsCanBeWrittenToTheAreasAndAreCutAtTheirEnd) {
    simulator.setLVarsText("LIGHTING:0.5");
    simulator.setLVarsText(std::string(5000, 'x'));
    simulator.respond("MF.Clients.Add.Other.Finished");
    EXPECT_EQ(responses(), Texts{"MF.Clients.Add.Other.Finished"});
    EXPECT_EQ(client.textsOf(SimulatorClient::lvarsRequest), (Texts{"LIGHTING:0.5", std::string(4095, 'x')}));
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
