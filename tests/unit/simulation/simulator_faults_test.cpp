#include "simulation/simulator/virtual_simulator.h"
#include "tests/support/loopback_peer.h"
#include "tests/unit/simulation/simulator_client.h"

namespace {

using Kind = SimulatorRecordKind;
using std::chrono::milliseconds;

class VirtualSimulatorFaults : public testing::TestWithParam<Transport> {
protected:
    void SetUp() override { ASSERT_TRUE(client.waitFor(simConnectRecvOpen)); }

    bool accepts() { return SimulatorClient(simulator).openResult() == simConnectOk; }

    RunningSimulator simulator{GetParam()};
    SimulatorClient client{simulator};
};

INSTANTIATE_TEST_SUITE_P(Transports, VirtualSimulatorFaults, testing::ValuesIn(transports()), transportName);

TEST_P(VirtualSimulatorFaults, QuitIsSentBeforeTheEnd) {
    simulator.quit();
    EXPECT_EQ(simulator.sessionCount(), 0U);
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(client.log.messages.back(), simulatorMessage(3));
    EXPECT_FALSE(accepts());
}

TEST_P(VirtualSimulatorFaults, QuitReachesAClientWhoseRequestsWereNotRead) {
    client.attach();
    simulator.stopReading(true);
    client.command("MF.Ping");
    simulator.quit();
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(client.log.messages.back(), simulatorMessage(3));
}

TEST_P(VirtualSimulatorFaults, CrashSendsNoQuit) {
    simulator.die();
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(client.log.ids(), std::vector<std::uint32_t>{simConnectRecvOpen});
    EXPECT_FALSE(accepts());
}

TEST_P(VirtualSimulatorFaults, NextRunListensInTheSamePlaceWithNewAreas) {
    const SimConnectEndpoint before = simulator.endpoint();
    client.attach();
    client.command("MF.Ping");
    ASSERT_TRUE(client.waitFor(simConnectRecvClientData));
    simulator.die();
    simulator.refuseOpens(false);
    EXPECT_EQ(simulator.endpoint().port, before.port);
    EXPECT_EQ(simulator.endpoint().pipe, before.pipe);
    SimulatorClient next(simulator);
    next.attach();
    // In the same run the areas would already hold this command and its answer.
    next.command("MF.Ping");
    ASSERT_TRUE(next.waitFor(simConnectRecvClientData));
    EXPECT_EQ(next.textsOf(SimulatorClient::responseRequest), std::vector<std::string>{"MF.Pong"});
}

TEST_P(VirtualSimulatorFaults, RefusedAndHungUpOpensFailAndOpenSessionsStay) {
    for (const auto refuse : {&VirtualSimulator::refuseOpens, &VirtualSimulator::hangUpOnOpens}) {
        (simulator.*refuse)(true);
        EXPECT_FALSE(accepts());
        EXPECT_TRUE(client.settle());
        (simulator.*refuse)(false);
        EXPECT_TRUE(accepts());
    }
    // The client, two accepted ones and the one that was hung up on.
    EXPECT_EQ(simulator.texts(Kind::Connected).size(), 4U);
    simulator.takeProtocols(2, 3);
    EXPECT_FALSE(accepts());
}

TEST_P(VirtualSimulatorFaults, LateOpenKeepsTheRequestsUntilThen) {
    constexpr milliseconds delay{200};
    simulator.delayOpens(delay);
    const auto begin = std::chrono::steady_clock::now();
    SimulatorClient impatient(simulator, "impatient", {milliseconds(0)});
    impatient.attach();
    impatient.command("MF.Ping");
    EXPECT_EQ(impatient.dispatch(), simConnectOk);
    ASSERT_TRUE(impatient.waitFor(simConnectRecvClientData));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, delay);
    EXPECT_EQ(impatient.log.ids(), (std::vector<std::uint32_t>{simConnectRecvOpen, simConnectRecvClientData}));
}

TEST_P(VirtualSimulatorFaults, CutMessageEndsTheClientsLink) {
    simulator.cutMessage();
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(client.log.messages.size(), 1U);
}

TEST_P(VirtualSimulatorFaults, RawBytesReachTheClientAsTheyAre) {
    simulator.sendRaw(simulatorMessage(99, {1, 2, 3}));
    ASSERT_TRUE(client.waitFor(99));
    EXPECT_EQ(client.log.messages.back(), simulatorMessage(99, {1, 2, 3}));
    simulator.sendRaw(wireWords({5, 4, 3}));
    EXPECT_TRUE(client.waitForLoss());
}

TEST_P(VirtualSimulatorFaults, EachEndIsRecordedOnce) {
    ASSERT_TRUE(simulator.waitForSessionCount(1));
    SimulatorClient other(simulator);
    other.close();
    EXPECT_TRUE(simulator.waitForText(Kind::Closed, ""));
    simulator.clearRecords();
    simulator.quit();
    simulator.die();
    simulator.dropSessions();
    EXPECT_TRUE(client.waitForLoss());
    simulator.stop();
    EXPECT_EQ(simulator.texts(Kind::Closed).size(), 1U);
}

} // namespace
