#include "simulation/virtual_simulator.h"
#include "tests/support/loopback_peer.h"
#include "tests/unit/simulation/simulator_client.h"

namespace {

using Kind = SimulatorRecordKind;
using std::chrono::milliseconds;

TEST(VirtualSimulatorFaults, QuitIsSaidBeforeTheEnd) {
    RunningSimulator simulator;
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.quit();
    EXPECT_EQ(simulator.sessionCount(), 0U);
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(client.log.messages.back(), simulatorMessage(3));
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
}

TEST(VirtualSimulatorFaults, QuitReachesAClientWhoseRequestsWereNotRead) {
    RunningSimulator simulator;
    SimulatorClient client(simulator);
    client.attach();
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.stopReading(true);
    client.command("MF.Ping");
    simulator.quit();
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(client.log.messages.back(), simulatorMessage(3));
}

TEST(VirtualSimulatorFaults, DeathHasNoQuit) {
    RunningSimulator simulator;
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.die();
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(client.log.ids(), std::vector<std::uint32_t>{simConnectRecvOpen});
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
}

TEST(VirtualSimulatorFaults, NextRunListensOnTheSamePortWithNewAreas) {
    RunningSimulator simulator;
    const std::uint16_t port = simulator.port();
    simulator.setBattery(true);
    {
        SimulatorClient client(simulator);
        client.attach();
        client.command("MF.Ping");
        ASSERT_TRUE(client.waitFor(simConnectRecvClientData));
    }
    simulator.die();
    simulator.refuseOpens(false);
    EXPECT_EQ(simulator.port(), port);
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    client.attach();
    // In the same run the command and its answer would both be what the areas hold already.
    client.command("MF.Ping");
    ASSERT_TRUE(client.waitFor(simConnectRecvClientData));
    EXPECT_EQ(client.textsOf(SimulatorClient::responseRequest), std::vector<std::string>{"MF.Pong"});
}

TEST(VirtualSimulatorFaults, DroppedClientsMayComeBackAtOnce) {
    RunningSimulator simulator;
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.dropSessions();
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_TRUE(client.messagesOf(simConnectRecvQuit).empty());
    SimulatorClient again(simulator);
    EXPECT_TRUE(again.waitFor(simConnectRecvOpen));
}

TEST(VirtualSimulatorFaults, RefusedOpensFailAndOpenSessionsStay) {
    RunningSimulator simulator;
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.refuseOpens(true);
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
    EXPECT_TRUE(client.settle());
    simulator.refuseOpens(false);
    SimulatorClient again(simulator);
    EXPECT_TRUE(again.waitFor(simConnectRecvOpen));
}

TEST(VirtualSimulatorFaults, RefusalBeforeStartDoesNothing) {
    VirtualSimulator simulator;
    simulator.refuseOpens(false);
    simulator.refuseOpens(true);
    std::string error;
    ASSERT_TRUE(simulator.start(0, error)) << error;
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectOk);
}

TEST(VirtualSimulatorFaults, LateOpenKeepsTheRequestsUntilThen) {
    RunningSimulator simulator;
    constexpr milliseconds delay{200};
    simulator.delayOpens(delay);
    const auto begin = std::chrono::steady_clock::now();
    SimulatorClient client(simulator);
    client.attach();
    client.command("MF.Ping");
    EXPECT_EQ(client.dispatch(), simConnectOk);
    ASSERT_TRUE(client.waitFor(simConnectRecvClientData));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, delay);
    EXPECT_EQ(client.log.ids(), (std::vector<std::uint32_t>{simConnectRecvOpen, simConnectRecvClientData}));
}

TEST(VirtualSimulatorFaults, StallBacksUpAndLosesNothing) {
    VirtualSimulatorOptions options;
    options.receiveBufferBytes = 4096;
    RunningSimulator simulator(options);
    SimulatorClient client(simulator);
    client.attach();
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.stopReading(true);
    constexpr std::size_t commands = 20000;
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

TEST(VirtualSimulatorFaults, CutMessageEndsTheClientsLink) {
    RunningSimulator simulator;
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.cutMessage();
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(client.log.messages.size(), 1U);
}

TEST(VirtualSimulatorFaults, RawBytesReachTheClientAsTheyAre) {
    RunningSimulator simulator;
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.sendRaw(simulatorMessage(99, {1, 2, 3}));
    ASSERT_TRUE(client.waitFor(99));
    EXPECT_EQ(client.log.messages.back(), simulatorMessage(99, {1, 2, 3}));
    simulator.sendRaw(wireWords({5, 4, 3}));
    EXPECT_TRUE(client.waitForLoss());
}

TEST(VirtualSimulatorFaults, SingleBytesMakeTheSameMessages) {
    RunningSimulator simulator;
    simulator.sendByteByByte(true);
    SimulatorClient client(simulator);
    client.attach();
    client.command("MF.Version.Get");
    ASSERT_TRUE(client.waitFor(simConnectRecvClientData));
    EXPECT_EQ(client.textsOf(SimulatorClient::responseRequest), std::vector<std::string>{"MF.Version.1.0.1"});
    EXPECT_EQ(client.messagesOf(simConnectRecvOpen).front().size(), 308U);
}

TEST(VirtualSimulatorFaults, ClientThatGoesIsNoticed) {
    RunningSimulator simulator;
    {
        const SimulatorClient client(simulator);
        ASSERT_TRUE(simulator.waitForSessionCount(1));
    }
    EXPECT_TRUE(simulator.waitForSessionCount(0));
    EXPECT_TRUE(simulator.waitForKind(Kind::Closed));
}

TEST(VirtualSimulatorFaults, EachEndIsRecordedOnce) {
    RunningSimulator simulator;
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
