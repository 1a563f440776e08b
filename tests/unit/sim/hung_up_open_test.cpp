// The worker, the network client and a simulator on loopback together, under the test's own time.

#include "platform/network_simconnect.h"
#include "sim/simconnect_client.h"
#include "simulation/simulator/virtual_simulator.h"
#include "tests/support/fake_host.h"
#include "wire/simconnect_open.h"

#include <gtest/gtest.h>

namespace {

// A library that opens sessions with this simulator alone, and that a busy machine doesn't make impatient.
SimConnectLibrary libraryFor(const VirtualSimulator& simulator) {
    SimConnectLibrary library = networkSimConnectLibrary();
    library.open = [&simulator](SimConnectHandle* handle, const char* name, void*, std::uint32_t, void*,
                                std::uint32_t) {
        return simConnectOpenAt(handle, name, simulator.endpoint(), {std::chrono::seconds(30)});
    };
    return library;
}

TEST(SimClientHungUpOn, ContactsTheSimulatorOnceBeforeEachBackoff) {
    VirtualSimulator simulator;
    std::string error;
    ASSERT_TRUE(simulator.start(0, error)) << error;
    simulator.hangUpOnOpens(true);
    FakeHost host;
    host.holdSleeps();
    host.setProcesses({"FlightSimulator.exe"});
    SimConnectClient client(libraryFor(simulator), host.record());
    std::vector<bool> connections;
    ASSERT_TRUE(client.start(
        "bridge", [&](bool connected) { connections.push_back(connected); }, nullptr, error));
    std::size_t contacts = 0;
    std::int64_t sleep = host.waitForSleep();
    for (const std::int64_t backoff : {5000, 10000, 20000, 30000, 30000}) {
        EXPECT_EQ(sleep, backoff);
        EXPECT_EQ(simulator.texts(SimulatorRecordKind::Connected).size(), ++contacts);
        sleep = host.nextSleep();
    }
    host.letSleepsPass();
    client.stop();
    EXPECT_TRUE(connections.empty());
}

} // namespace
