#include "simulation/simulator/virtual_simulator.h"
#include "tests/support/loopback_peer.h"
#include "tests/unit/simulation/simulator_client.h"

namespace {

using Kind = SimulatorRecordKind;
using std::chrono::milliseconds;

class VirtualSimulatorFaults : public testing::TestWithParam<Transport> {};

INSTANTIATE_TEST_SUITE_P(Transports, VirtualSimulatorFaults, testing::ValuesIn(transports()), transportName);

TEST_P(VirtualSimulatorFaults, QuitIsSaidBeforeTheEnd) {
    RunningSimulator simulator(GetParam());
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.quit();
    EXPECT_EQ(simulator.sessionCount(), 0U);
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(client.log.messages.back(), simulatorMessage(3));
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
}

TEST_P(VirtualSimulatorFaults, QuitReachesAClientWhoseRequestsWereNotRead) {
    RunningSimulator simulator(GetParam());
    SimulatorClient client(simulator);
    client.attach();
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.stopReading(true);
    client.command("MF.Ping");
    simulator.quit();
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(client.log.messages.back(), simulatorMessage(3));
}

TEST_P(VirtualSimulatorFaults, DeathHasNoQuit) {
    RunningSimulator simulator(GetParam());
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.die();
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(client.log.ids(), std::vector<std::uint32_t>{simConnectRecvOpen});
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
}

TEST_P(VirtualSimulatorFaults, NextRunListensInTheSamePlaceWithNewAreas) {
    RunningSimulator simulator(GetParam());
    const SimConnectEndpoint before = simulator.endpoint();
    simulator.setBattery(true);
    {
        SimulatorClient client(simulator);
        client.attach();
        client.command("MF.Ping");
        ASSERT_TRUE(client.waitFor(simConnectRecvClientData));
    }
    simulator.die();
    simulator.refuseOpens(false);
    EXPECT_EQ(simulator.endpoint().port, before.port);
    EXPECT_EQ(simulator.endpoint().pipe, before.pipe);
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    client.attach();
    // In the same run the command and its answer would both be what the areas hold already.
    client.command("MF.Ping");
    ASSERT_TRUE(client.waitFor(simConnectRecvClientData));
    EXPECT_EQ(client.textsOf(SimulatorClient::responseRequest), std::vector<std::string>{"MF.Pong"});
}

TEST_P(VirtualSimulatorFaults, DroppedClientsMayComeBackAtOnce) {
    RunningSimulator simulator(GetParam());
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.dropSessions();
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_TRUE(client.messagesOf(simConnectRecvQuit).empty());
    SimulatorClient again(simulator);
    EXPECT_TRUE(again.waitFor(simConnectRecvOpen));
}

TEST_P(VirtualSimulatorFaults, RefusedOpensFailAndOpenSessionsStay) {
    RunningSimulator simulator(GetParam());
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.refuseOpens(true);
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
    EXPECT_TRUE(client.settle());
    simulator.refuseOpens(false);
    SimulatorClient again(simulator);
    EXPECT_TRUE(again.waitFor(simConnectRecvOpen));
}

TEST_P(VirtualSimulatorFaults, HungUpOpensFailAndOpenSessionsStay) {
    RunningSimulator simulator(GetParam());
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.hangUpOnOpens(true);
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
    EXPECT_EQ(simulator.texts(Kind::Connected).size(), 2U);
    EXPECT_TRUE(client.settle());
    simulator.hangUpOnOpens(false);
    SimulatorClient again(simulator);
    EXPECT_TRUE(again.waitFor(simConnectRecvOpen));
}

TEST_P(VirtualSimulatorFaults, ClientOfAnotherProtocolComesBackInOneThatIsTaken) {
    RunningSimulator simulator(GetParam());
    for (const std::uint32_t protocol : {5U, 6U}) {
        simulator.clearRecords();
        simulator.takeProtocols(protocol, protocol);
        SimulatorClient client(simulator);
        ASSERT_TRUE(simulator.waitForKind(Kind::Opened));
        EXPECT_EQ(simulator.records().back().value, protocol);
        EXPECT_TRUE(client.settle());
    }
    simulator.takeProtocols(2, 3);
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
}

TEST_P(VirtualSimulatorFaults, RefusalBeforeStartDoesNothing) {
    VirtualSimulator simulator;
    simulator.refuseOpens(false);
    simulator.refuseOpens(true);
    startOn(simulator, GetParam());
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectOk);
}

TEST_P(VirtualSimulatorFaults, LateOpenKeepsTheRequestsUntilThen) {
    RunningSimulator simulator(GetParam());
    constexpr milliseconds delay{200};
    simulator.delayOpens(delay);
    const auto begin = std::chrono::steady_clock::now();
    SimulatorClient client(simulator, "impatient", {milliseconds(0)});
    client.attach();
    client.command("MF.Ping");
    EXPECT_EQ(client.dispatch(), simConnectOk);
    ASSERT_TRUE(client.waitFor(simConnectRecvClientData));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, delay);
    EXPECT_EQ(client.log.ids(), (std::vector<std::uint32_t>{simConnectRecvOpen, simConnectRecvClientData}));
}

TEST_P(VirtualSimulatorFaults, StallBacksUpAndLosesNothing) {
    VirtualSimulatorOptions options;
    options.receiveBufferBytes = 4096;
    RunningSimulator simulator(GetParam(), options);
    SimulatorClient client(simulator);
    client.attach();
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.stopReading(true);
    // A socket holds megabytes before anything waits in the client, a pipe next to nothing.
    const std::size_t commands = GetParam() == Transport::Tcp ? 20000 : 2000;
    for (std::size_t i = 0; i < commands; ++i) {
        client.command("MF.SimVars.Set." + std::to_string(i));
    }
    EXPECT_FALSE(simulator.waitForKind(Kind::Executed, commands, milliseconds(20)));
    simulator.stopReading(false);
    EXPECT_TRUE(waitUntil([&] {
        EXPECT_EQ(client.dispatch(), simConnectOk);
        return simulator.waitForKind(Kind::Executed, commands, milliseconds(1));
    }));
    const auto texts = simulator.texts(Kind::Executed);
    ASSERT_EQ(texts.size(), commands);
    for (std::size_t i = 0; i < commands; ++i) {
        ASSERT_EQ(texts[i], std::to_string(i));
    }
}

TEST_P(VirtualSimulatorFaults, CutMessageEndsTheClientsLink) {
    RunningSimulator simulator(GetParam());
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.cutMessage();
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(client.log.messages.size(), 1U);
}

TEST_P(VirtualSimulatorFaults, RawBytesReachTheClientAsTheyAre) {
    RunningSimulator simulator(GetParam());
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.sendRaw(simulatorMessage(99, {1, 2, 3}));
    ASSERT_TRUE(client.waitFor(99));
    EXPECT_EQ(client.log.messages.back(), simulatorMessage(99, {1, 2, 3}));
    simulator.sendRaw(wireWords({5, 4, 3}));
    EXPECT_TRUE(client.waitForLoss());
}

TEST_P(VirtualSimulatorFaults, SingleBytesMakeTheSameMessages) {
    RunningSimulator simulator(GetParam());
    simulator.sendByteByByte(true);
    SimulatorClient client(simulator);
    client.attach();
    client.command("MF.Version.Get");
    ASSERT_TRUE(client.waitFor(simConnectRecvClientData));
    EXPECT_EQ(client.textsOf(SimulatorClient::responseRequest), std::vector<std::string>{"MF.Version.1.0.1"});
    EXPECT_EQ(client.messagesOf(simConnectRecvOpen).front().size(), 308U);
}

TEST_P(VirtualSimulatorFaults, ClientThatGoesIsNoticed) {
    RunningSimulator simulator(GetParam());
    {
        const SimulatorClient client(simulator);
        ASSERT_TRUE(simulator.waitForSessionCount(1));
    }
    EXPECT_TRUE(simulator.waitForSessionCount(0));
    EXPECT_TRUE(simulator.waitForKind(Kind::Closed));
}

TEST_P(VirtualSimulatorFaults, EachEndIsRecordedOnce) {
    RunningSimulator simulator(GetParam());
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.quit();
    simulator.die();
    simulator.dropSessions();
    EXPECT_TRUE(client.waitForLoss());
    simulator.stop();
    EXPECT_EQ(simulator.texts(Kind::Closed).size(), 1U);
}

} // namespace
