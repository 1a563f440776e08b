#include "simulation/simulator/virtual_simulator.h"

#include "simulation/simulator/data_requests.h"
#include "tests/support/loopback_peer.h"
#include "tests/unit/simulation/simulator_client.h"

#include <mutex>

namespace {

using Kind = SimulatorRecordKind;
using Exceptions = std::vector<std::array<std::uint32_t, 3>>;
using Words = std::vector<std::uint32_t>;

constexpr const char* battery = "Electrical Master Battery:2";
constexpr std::uint32_t everyFrame = 3;

class VirtualSimulatorTest : public testing::Test {
protected:
    static void defineBattery(const SimulatorClient& client, std::uint32_t type = 1) {
        SimConnect_AddToDataDefinition(client.get(), 1, battery, "Bool", type, 0, simConnectUnused);
    }
    static void requestBattery(const SimulatorClient& client, std::uint32_t request, std::uint32_t period) {
        SimConnect_RequestDataOnSimObject(client.get(), request, 1, 0, period, 1, 0, 0, 0);
    }
    /// A client that has sent these bytes.
    Socket connectionThatSent(const PeerBytes& bytes) const {
        Socket socket = connectSocket("127.0.0.1", simulator.port(), AddressFamily::Ipv4, std::chrono::seconds(60));
        EXPECT_EQ(socket.send(bytes).count, bytes.size());
        return socket;
    }

    RunningSimulator simulator;
    SimulatorClient client{simulator, "VantrelBridgeHID"};
};

} // namespace

TEST_F(VirtualSimulatorTest, AnswersOpenWithItsNameAndVersions) {
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    const auto open = client.messagesOf(simConnectRecvOpen).front();
    ASSERT_EQ(open.size(), 308U);
    EXPECT_EQ(MessageLog::wordOf(open, 4), 4U);
    EXPECT_EQ(std::string(open.begin() + 12, open.begin() + 22), std::string("KittyHawk\0", 10));
    Words versions;
    for (std::size_t offset = 268; offset < 308; offset += 4) {
        versions.push_back(MessageLog::wordOf(open, offset));
    }
    EXPECT_EQ(versions, (Words{11, 0, 282174, 999, 11, 0, 62651, 3, 0, 0}));
    ASSERT_TRUE(simulator.waitForText(Kind::Opened, "VantrelBridgeHID"));
    EXPECT_EQ(simulator.records().back().value, 4U);
}

TEST_F(VirtualSimulatorTest, AcceptsProtocolsTwoToSixAndAnswersInThem) {
    for (std::uint32_t protocol = 1; protocol <= 7; ++protocol) {
        SCOPED_TRACE(protocol);
        const bool accepted = protocol >= 2 && protocol <= 6;
        PeerBytes request = wireWords({296, protocol, 0xF0000001, 77});
        request.resize(296);
        Socket socket = connectionThatSent(request);
        PeerBytes answer(accepted ? 308 : 24);
        ASSERT_TRUE(waitUntil([&] { return socket.receive(answer).count == answer.size(); }));
        if (accepted) {
            EXPECT_EQ(answer[4], protocol);
            EXPECT_EQ(answer[8], simConnectRecvOpen);
        } else {
            EXPECT_EQ(answer, wireWords({24, protocol, 1, 5, 77, 4}));
            std::array<std::uint8_t, 1> end{};
            EXPECT_TRUE(waitUntil([&] { return socket.receive(end).status == TransferStatus::Ended; }));
        }
    }
}

TEST_F(VirtualSimulatorTest, UnopenedAndShortRequestsAreErrors) {
    struct Case {
        PeerBytes request;
        std::uint32_t code;
        std::uint32_t sendId;
    };
    const Case cases[] = {
        {wireWords({36, 4, 0xF0000005, 9, 0, 1, 0, 1, 16}), 4, 9},
        {wireWords({20, 4, 0xF000000C, 3, 1}), 1, 3},
    };
    for (const Case& one : cases) {
        const Socket socket = connectionThatSent(one.request);
        const auto isRefused = [&one](const SimulatorRecord& record) {
            return record.kind == Kind::Exception && record.value == one.code && record.sendId == one.sendId;
        };
        EXPECT_TRUE(simulator.waitFor([&](const auto& records) { return std::ranges::any_of(records, isRefused); }));
    }
}

TEST_F(VirtualSimulatorTest, BrokenRequestEndsThatSessionOnly) {
    ASSERT_TRUE(simulator.waitForSessionCount(1));
    const Socket socket = connectionThatSent(wireWords({15, 4, 0xF0000001, 3}));
    ASSERT_TRUE(simulator.waitForKind(Kind::Closed));
    EXPECT_TRUE(simulator.waitForSessionCount(1));
    EXPECT_TRUE(client.settle());
}

TEST_F(VirtualSimulatorTest, BatteryIsSentAtOnceAndThenOnChange) {
    defineBattery(client);
    requestBattery(client, 7, everyFrame);
    ASSERT_TRUE(client.waitFor(simConnectRecvSimobjectData));
    for (const bool on : {false, true, true, false}) {
        simulator.setBattery(on);
    }
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.wordsOf(7), (Words{0, 1, 0}));
    const auto message = client.messagesOf(simConnectRecvSimobjectData).front();
    EXPECT_EQ(message, PeerBytes(simulatorMessage(8, wireWords({7, 0, 1, 1, 1, 1, 1, 0}))));
    EXPECT_TRUE(simulator.waitForText(Kind::Subscribed, battery));
}

TEST_F(VirtualSimulatorTest, BatteryIsSentInTheRequestedType) {
    simulator.setBattery(true);
    const std::vector<PeerBytes> payloads{wireWords({1}), wireWords({1, 0}), wireWords({0x3F800000}),
                                          wireWords({0, 0x3FF00000})};
    for (std::uint32_t type = 1; type <= 4; ++type) {
        SimulatorClient reader(simulator);
        defineBattery(reader, type);
        requestBattery(reader, 1, periodOnce);
        ASSERT_TRUE(reader.waitFor(simConnectRecvSimobjectData));
        const auto message = reader.messagesOf(simConnectRecvSimobjectData).front();
        EXPECT_EQ(PeerBytes(message.begin() + 40, message.end()), payloads[type - 1]) << type;
    }
}

TEST_F(VirtualSimulatorTest, PeriodOnceSendsOnceAndNeverEndsARequest) {
    defineBattery(client);
    requestBattery(client, 1, everyFrame);
    requestBattery(client, 2, periodOnce);
    requestBattery(client, 1, periodNever);
    ASSERT_TRUE(client.settle());
    simulator.setBattery(true);
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.messagesOf(simConnectRecvSimobjectData).size(), 2U);
}

TEST_F(VirtualSimulatorTest, VariableRequestsAreRefusedWithTheirSendIdAndArgument) {
    // Send ids 2 upward: 1 was OPEN's.
    SimConnect_AddToDataDefinition(client.get(), 1, "NO SUCH VARIABLE", "Bool", 1, 0, 0);
    SimConnect_AddToDataDefinition(client.get(), 1, battery, "feet", 1, 0, 0);
    SimConnect_AddToDataDefinition(client.get(), 1, battery, "Bool", 5, 0, 0);
    SimConnect_RequestDataOnSimObject(client.get(), 1, 1, 0, everyFrame, 1, 0, 0, 0);
    SimConnect_AddToDataDefinition(client.get(), 1, battery, "Bool", 1, 0, 0);
    SimConnect_RequestDataOnSimObject(client.get(), 1, 1, 9, everyFrame, 1, 0, 0, 0);
    SimConnect_RequestDataOnSimObject(client.get(), 1, 1, 0, 5, 1, 0, 0, 0);
    ASSERT_TRUE(client.waitFor(simConnectRecvException, 6));
    EXPECT_EQ(client.exceptions(), (Exceptions{{7, 2, 2}, {7, 3, 3}, {18, 4, 4}, {3, 5, 2}, {3, 7, 3}, {27, 8, 4}}));
}

TEST_F(VirtualSimulatorTest, EventRequestsAreRefusedWithTheirSendIdAndArgument) {
    SimConnect_MapClientEventToSimEvent(client.get(), 1, "AP_MASTER");
    SimConnect_MapClientEventToSimEvent(client.get(), 1, "AP_ALT_HOLD");
    SimConnect_MapClientEventToSimEvent(client.get(), 2, "NOT A NAME");
    SimConnect_TransmitClientEvent(client.get(), 0, 2, 0, 1, 0x10);
    SimConnect_TransmitClientEvent(client.get(), 7, 1, 0, 1, 0x10);
    ASSERT_TRUE(client.waitFor(simConnectRecvException, 4));
    EXPECT_EQ(client.exceptions(), (Exceptions{{9, 3, 1}, {7, 4, 2}, {3, 5, 2}, {3, 6, 1}}));
    const auto message = client.messagesOf(simConnectRecvException).front();
    EXPECT_EQ(message, PeerBytes(simulatorMessage(1, wireWords({9, 3, 1}))));
    EXPECT_TRUE(simulator.waitForKind(Kind::Exception, 4));
}

TEST(VirtualSimulatorCallback, GetsTheRecordsInOrderAndMayUseTheControls) {
    RunningSimulator simulator;
    std::mutex mutex;
    std::vector<Kind> kinds;
    simulator.setRecordCallback([&](const SimulatorRecord& record) {
        simulator.setBattery(true);
        const std::lock_guard lock(mutex);
        kinds.push_back(record.kind);
    });
    ASSERT_TRUE(SimulatorClient(simulator).waitFor(simConnectRecvOpen));
    EXPECT_TRUE(waitUntil([&] {
        const std::lock_guard lock(mutex);
        return kinds == std::vector<Kind>{Kind::Connected, Kind::Opened, Kind::Closed};
    }));
    simulator.setRecordCallback(nullptr);
}
