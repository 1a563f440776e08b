// SimConnect_Open by what SimConnect.cfg says, with simulators on pipes and ports.

#include "tests/unit/simulation/simulator_client.h"
#include "tests/unit/simulation/windows/configured_user.h"

#include <winsock2.h>
#include <ws2tcpip.h>

namespace {

/// Opens a session as the user's configuration says, and closes it.
SimConnectResult openConfigured(std::uint32_t configIndex = 0) {
    SimConnectHandle handle = nullptr;
    const SimConnectResult result = SimConnect_Open(&handle, "configured", nullptr, 0, nullptr, configIndex);
    SimConnect_Close(handle);
    return result;
}

bool reaches(VirtualSimulator& simulator) {
    simulator.clearRecords();
    return openConfigured() == simConnectOk && simulator.waitForText(SimulatorRecordKind::Opened, "configured");
}

class SimulatorOnAPipe : public VirtualSimulator {
public:
    explicit SimulatorOnAPipe(std::string_view name) {
        std::string error;
        EXPECT_TRUE(startOnPipe(std::string(name), error)) << error;
    }
};

/// Listens on ::1 and accepts nobody.
class Ipv6Listener {
public:
    explicit Ipv6Listener(std::uint16_t port) : listener(::socket(AF_INET6, SOCK_STREAM, 0)) {
        sockaddr_in6 address{};
        address.sin6_family = AF_INET6;
        address.sin6_port = htons(port);
        address.sin6_addr = in6addr_loopback;
        EXPECT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(listener, 1), 0);
    }
    ~Ipv6Listener() { closesocket(listener); }
    Ipv6Listener(const Ipv6Listener&) = delete;
    Ipv6Listener& operator=(const Ipv6Listener&) = delete;

    bool hasClient() const {
        WSAPOLLFD entry{listener, POLLIN, 0};
        return WSAPoll(&entry, 1, 30000) == 1;
    }

private:
    SOCKET listener;
};

} // namespace

TEST(ConfiguredOpen, TakesTheSimulatorsOwnPipeUnlessAnotherIsConfigured) {
    SimulatorOnAPipe simulator(simConnectPipe);
    const ConfiguredUser user;
    EXPECT_TRUE(reaches(simulator));
    for (const char* configuration : {"[SimConnect]\nProtocol=Pipe\n", "[SimConnect]\n"}) {
        user.configure(configuration);
        EXPECT_TRUE(reaches(simulator)) << configuration;
    }
    user.configure("[SimConnect]\nProtocol=IPv4\nPort=1\n");
    EXPECT_EQ(openConfigured(), simConnectFail);
    EXPECT_EQ(openConfigured(simConnectLocalIndex), simConnectOk);
}

TEST(ConfiguredOpen, FailsWithoutAConfigurationWhenNobodyHasMadeThePipe) {
    const ConfiguredUser user;
    EXPECT_EQ(openConfigured(), simConnectFail);
    EXPECT_EQ(openConfigured(5), simConnectFail);
}

TEST(ConfiguredOpen, TakesAPipeByItsName) {
    for (const std::string& name : {freePipeName(), freePipeName() + "/SimConnect"}) {
        SimulatorOnAPipe simulator(name);
        const ConfiguredUser user(simulator.endpoint());
        EXPECT_TRUE(reaches(simulator)) << name;
        EXPECT_EQ(openConfigured(1), simConnectInvalidArgument);
    }
}

TEST(ConfiguredOpen, TakesAnIpv4Port) {
    RunningSimulator simulator;
    const ConfiguredUser user(simulator.endpoint());
    EXPECT_TRUE(reaches(simulator));
}

TEST(ConfiguredOpen, AutoTakesIpv6BeforeIpv4) {
    const RunningSimulator onIpv4;
    const Ipv6Listener onIpv6(onIpv4.port());
    const ConfiguredUser user("[SimConnect]\nProtocol=Auto\nPort=" + std::to_string(onIpv4.port()) + "\n");
    EXPECT_EQ(openConfigured(), simConnectOk);
    EXPECT_TRUE(onIpv6.hasClient());
    EXPECT_TRUE(onIpv4.records().empty());
}
