#include "simulation/simulator/simulator_console.h"
#include "tests/unit/simulation/simulator_client.h"

#include <memory>

namespace {

class SimulatorPlaces : public testing::TestWithParam<Transport> {
protected:
    static bool startAt(VirtualSimulator& simulator, const SimConnectEndpoint& place, std::string& error) {
        return place.pipe.empty() ? simulator.start(place.port, error) : simulator.startOnPipe(place.pipe, error);
    }
};

INSTANTIATE_TEST_SUITE_P(Transports, SimulatorPlaces, testing::ValuesIn(transports()), transportName);

TEST_P(SimulatorPlaces, PlaceIsToldAsItWasTaken) {
    const RunningSimulator simulator(GetParam());
    const bool isPipe = GetParam() == Transport::Pipe;
    EXPECT_EQ(simulator.endpoint().pipe.empty(), !isPipe);
    EXPECT_EQ(simulator.endpoint().port == 0, isPipe);
    EXPECT_EQ(simulator.port(), simulator.endpoint().port);
}

TEST_P(SimulatorPlaces, TakenPlaceIsRefused) {
    RunningSimulator first(GetParam());
    VirtualSimulator second;
    std::string error;
    EXPECT_FALSE(startAt(second, first.endpoint(), error));
    EXPECT_TRUE(error.starts_with("Failed to listen on p")) << error;
    EXPECT_FALSE(startAt(first, {}, error));
    EXPECT_EQ(error, "Virtual simulator already running");
}

TEST_P(SimulatorPlaces, PlaceCanBeTakenAgainAfterAStop) {
    RunningSimulator simulator(GetParam());
    const SimConnectEndpoint place = simulator.endpoint();
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.stop();
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
    std::string error;
    ASSERT_TRUE(startAt(simulator, place, error)) << error;
    SimulatorClient again(simulator);
    EXPECT_TRUE(again.waitFor(simConnectRecvOpen));
}

TEST_P(SimulatorPlaces, ManyClientsAreServedAtOnce) {
    RunningSimulator simulator(GetParam());
    std::vector<std::unique_ptr<SimulatorClient>> clients;
    for (int i = 0; i < 20; ++i) {
        clients.push_back(std::make_unique<SimulatorClient>(simulator));
        ASSERT_EQ(clients.back()->openResult(), simConnectOk);
    }
    ASSERT_TRUE(simulator.waitForSessionCount(20));
    for (const auto& client : clients) {
        EXPECT_TRUE(client->waitFor(simConnectRecvOpen));
    }
    clients[7]->close();
    EXPECT_TRUE(simulator.waitForSessionCount(19));
    EXPECT_TRUE(clients[8]->settle());
}

TEST(SimulatorPlaceLine, TellsThePortOrThePipe) {
    EXPECT_EQ(listeningAsJson({"127.0.0.1", 500, AddressFamily::Ipv4}), R"({"kind":"listening","port":500})");
    EXPECT_EQ(listeningAsJson({".", 0, AddressFamily::Any, R"(Custom\Pipe)"}),
              R"({"kind":"listening","pipe":"Custom\\Pipe"})");
}

} // namespace
