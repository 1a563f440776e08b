// SimConnect_Open by what SimConnect.cfg says, with simulators on pipes and ports.

#include "tests/unit/simulation/simulator_client.h"
#include "tests/unit/simulation/windows/configured_user.h"

#include <winsock2.h>
#include <ws2tcpip.h>

namespace {

/// A session opened as the user's configuration says.
class ConfiguredSession {
public:
    explicit ConfiguredSession(std::uint32_t configIndex = 0)
        : result(SimConnect_Open(&handle, "configured", nullptr, 0, nullptr, configIndex)) {}
    ~ConfiguredSession() { SimConnect_Close(handle); }
    ConfiguredSession(const ConfiguredSession&) = delete;
    ConfiguredSession& operator=(const ConfiguredSession&) = delete;

    SimConnectResult openResult() const { return result; }

private:
    SimConnectHandle handle = nullptr;
    SimConnectResult result;
};

bool reaches(const VirtualSimulator& simulator) {
    const ConfiguredSession session;
    return session.openResult() == simConnectOk &&
           simulator.waitForText(SimulatorRecordKind::Opened, "configured", 1, std::chrono::milliseconds(3000));
}

/// Listens on ::1 and takes nobody.
class Ipv6Listener {
public:
    explicit Ipv6Listener(std::uint16_t port) : listener(::socket(AF_INET6, SOCK_STREAM, 0)) {
        sockaddr_in6 address{};
        address.sin6_family = AF_INET6;
        address.sin6_port = htons(port);
        address.sin6_addr = in6addr_loopback;
        EXPECT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(listener, 1), 0);
    }
    ~Ipv6Listener() { closesocket(listener); }
    Ipv6Listener(const Ipv6Listener&) = delete;
    Ipv6Listener& operator=(const Ipv6Listener&) = delete;

    /// Whether somebody has connected.
    bool hasClient() const {
        WSAPOLLFD entry{listener, POLLIN, 0};
        return WSAPoll(&entry, 1, 3000) == 1;
    }

private:
    SOCKET listener;
};

TEST(ConfiguredOpen, TakesTheSimulatorsOwnPipeWithoutAConfiguration) {
    const ConfiguredUser user;
    VirtualSimulator simulator;
    std::string error;
    ASSERT_TRUE(simulator.startOnPipe(std::string(simConnectPipe), error)) << error;
    EXPECT_TRUE(reaches(simulator));
    user.configure("[SimConnect]\nProtocol=Pipe\n");
    simulator.clearRecords();
    EXPECT_TRUE(reaches(simulator));
    user.configure("[SimConnect]\n");
    simulator.clearRecords();
    EXPECT_TRUE(reaches(simulator));
}

TEST(ConfiguredOpen, LocalIndexTakesTheSimulatorsOwnPipeWhateverIsConfigured) {
    const ConfiguredUser user("[SimConnect]\nProtocol=IPv4\nPort=1\n");
    VirtualSimulator simulator;
    std::string error;
    ASSERT_TRUE(simulator.startOnPipe(std::string(simConnectPipe), error)) << error;
    EXPECT_EQ(ConfiguredSession(simConnectLocalIndex).openResult(), simConnectOk);
    EXPECT_EQ(ConfiguredSession().openResult(), simConnectFail);
}

TEST(ConfiguredOpen, FailsWithoutAConfigurationWhenNobodyHasMadeThePipe) {
    const ConfiguredUser user;
    EXPECT_EQ(ConfiguredSession().openResult(), simConnectFail);
    EXPECT_EQ(ConfiguredSession(5).openResult(), simConnectFail);
}

TEST(ConfiguredOpen, TakesAPipeByItsName) {
    const RunningSimulator simulator(Transport::Pipe);
    const ConfiguredUser user(simulator.endpoint());
    EXPECT_TRUE(reaches(simulator));
}

TEST(ConfiguredOpen, TakesAPipeWhoseNameHasASlash) {
    VirtualSimulator simulator;
    std::string error;
    const std::string name = freePipeName() + "/SimConnect";
    ASSERT_TRUE(simulator.startOnPipe(name, error)) << error;
    const ConfiguredUser user("[SimConnect]\nProtocol=Pipe\nAddress=.\nPort=" + name + "\n");
    EXPECT_TRUE(reaches(simulator));
}

TEST(ConfiguredOpen, TakesAnIpv4Port) {
    const RunningSimulator simulator;
    const ConfiguredUser user(simulator.endpoint());
    EXPECT_TRUE(reaches(simulator));
}

TEST(ConfiguredOpen, TakesAnIpv6Port) {
    const RunningSimulator otherFamily;
    const Ipv6Listener simulator(otherFamily.port());
    const ConfiguredUser user("[SimConnect]\nProtocol=IPv6\nPort=" + std::to_string(otherFamily.port()) + "\n");
    EXPECT_EQ(ConfiguredSession().openResult(), simConnectOk);
    EXPECT_TRUE(simulator.hasClient());
}

TEST(ConfiguredOpen, AutoTakesThePipeBeforeAnyPort) {
    const RunningSimulator onPort;
    VirtualSimulator onPipe;
    std::string error;
    const std::string port = std::to_string(onPort.port());
    ASSERT_TRUE(onPipe.startOnPipe(port, error)) << error;
    const ConfiguredUser user("[SimConnect]\nProtocol=Auto\nPort=" + port + "\n");
    EXPECT_TRUE(reaches(onPipe));
    EXPECT_EQ(onPort.records().size(), 0U);
}

TEST(ConfiguredOpen, AutoTakesIpv6BeforeIpv4) {
    const RunningSimulator onIpv4;
    const Ipv6Listener onIpv6(onIpv4.port());
    const ConfiguredUser user("[SimConnect]\nProtocol=Auto\nPort=" + std::to_string(onIpv4.port()) + "\n");
    EXPECT_EQ(ConfiguredSession().openResult(), simConnectOk);
    EXPECT_TRUE(onIpv6.hasClient());
    EXPECT_EQ(onIpv4.records().size(), 0U);
}

TEST(ConfiguredOpen, AutoTakesIpv4WhenThereIsNothingElse) {
    const RunningSimulator simulator;
    const ConfiguredUser user("[SimConnect]\nProtocol=Auto\nPort=" + std::to_string(simulator.port()) + "\n");
    EXPECT_TRUE(reaches(simulator));
}

TEST(ConfiguredOpen, IndexThatIsNotConfiguredIsAnInvalidArgument) {
    const RunningSimulator simulator(Transport::Pipe);
    const ConfiguredUser user(simulator.endpoint());
    EXPECT_EQ(ConfiguredSession(1).openResult(), simConnectInvalidArgument);
}

} // namespace
