#include "tests/unit/simulation/simulator_client.h"

namespace {

class SimulatorPlaces : public testing::TestWithParam<Transport> {
protected:
    static bool startAt(VirtualSimulator& simulator, const SimConnectEndpoint& place, std::string& error) {
        return place.pipe.empty() ? simulator.start(place.port, error) : simulator.startOnPipe(place.pipe, error);
    }
};

INSTANTIATE_TEST_SUITE_P(Transports, SimulatorPlaces, testing::ValuesIn(transports()), transportName);

TEST_P(SimulatorPlaces, StartFailsAtATakenPlaceAndTwice) {
    RunningSimulator first(GetParam());
    VirtualSimulator second;
    std::string error;
    EXPECT_FALSE(startAt(second, first.endpoint(), error));
    const SimConnectEndpoint taken = first.endpoint();
    const std::string place = taken.pipe.empty() ? "port " + std::to_string(taken.port) : "pipe " + taken.pipe;
    EXPECT_TRUE(error.starts_with("Failed to listen on " + place + ": ")) << error;
    EXPECT_FALSE(startAt(first, {}, error));
    EXPECT_EQ(error, "Virtual simulator already running");
}

TEST_P(SimulatorPlaces, PlaceCanBeTakenAgainAfterAStop) {
    RunningSimulator simulator(GetParam());
    const SimConnectEndpoint place = simulator.endpoint();
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    simulator.stop();
    simulator.stop();
    EXPECT_TRUE(client.waitForLoss());
    EXPECT_EQ(simulator.sessionCount(), 0U);
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
    std::string error;
    ASSERT_TRUE(startAt(simulator, place, error)) << error;
    SimulatorClient again(simulator);
    EXPECT_TRUE(again.waitFor(simConnectRecvOpen));
}

} // namespace
