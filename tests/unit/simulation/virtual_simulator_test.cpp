#include "simulation/simulator/virtual_simulator.h"

#include "tests/support/loopback_peer.h"
#include "tests/unit/simulation/simulator_client.h"

#include <atomic>
#include <mutex>

namespace {

using Kind = SimulatorRecordKind;
using Exceptions = std::vector<std::array<std::uint32_t, 3>>;
using Words = std::vector<std::uint32_t>;
using Texts = std::vector<std::string>;

constexpr std::uint32_t batteryDefinition = 1;
constexpr std::uint32_t batteryRequest = 1;

void requestBattery(const SimulatorClient& client, std::uint32_t type = 1) {
    SimConnect_AddToDataDefinition(client.get(), batteryDefinition, "Electrical Master Battery:2", "Bool", type, 0,
                                   simConnectUnused);
    SimConnect_RequestDataOnSimObject(client.get(), batteryRequest, batteryDefinition, 0, 3, 1, 0, 0, 0);
}

TEST(VirtualSimulator, AnswersOpenWithItsNameAndVersions) {
    RunningSimulator simulator;
    SimulatorClient client(simulator, "VantrelBridgeHID");
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

/// A client that has sent these bytes.
Socket connectionThatSent(const VirtualSimulator& simulator, const PeerBytes& bytes) {
    Socket socket = connectSocket("127.0.0.1", simulator.port(), AddressFamily::Ipv4, std::chrono::seconds(60));
    EXPECT_EQ(socket.send(bytes).count, bytes.size());
    return socket;
}

PeerBytes openOf(std::uint32_t protocol) {
    PeerBytes request = wireWords({296, protocol, 0xF0000001, 77});
    request.resize(296);
    return request;
}

TEST(VirtualSimulator, AcceptsProtocolsTwoToSixAndAnswersInThem) {
    RunningSimulator simulator;
    for (std::uint32_t protocol = 1; protocol <= 7; ++protocol) {
        SCOPED_TRACE(protocol);
        const bool accepted = protocol >= 2 && protocol <= 6;
        Socket socket = connectionThatSent(simulator, openOf(protocol));
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
    EXPECT_EQ(simulator.texts(Kind::Opened).size(), 5U);
}

TEST(VirtualSimulator, UnopenedAndShortRequestsAreErrors) {
    RunningSimulator simulator;
    const auto expectException = [&simulator](const PeerBytes& request, std::uint32_t code, std::uint32_t sendId) {
        simulator.clearRecords();
        const Socket socket = connectionThatSent(simulator, request);
        ASSERT_TRUE(simulator.waitForKind(Kind::Exception));
        EXPECT_EQ(simulator.records().back().value, code);
        EXPECT_EQ(simulator.records().back().sendId, sendId);
    };
    expectException(wireWords({36, 4, 0xF0000005, 9, 0, 1, 0, 1, 16}), 4, 9);
    expectException(wireWords({20, 4, 0xF000000C, 3, 1}), 1, 3);
}

TEST(VirtualSimulator, BrokenRequestEndsThatSessionOnly) {
    RunningSimulator simulator;
    SimulatorClient client(simulator);
    ASSERT_TRUE(simulator.waitForSessionCount(1));
    const Socket socket = connectionThatSent(simulator, wireWords({15, 4, 0xF0000001, 3}));
    ASSERT_TRUE(simulator.waitForKind(Kind::Closed));
    EXPECT_TRUE(simulator.waitForSessionCount(1));
    EXPECT_TRUE(client.waitFor(simConnectRecvOpen));
    EXPECT_TRUE(client.settle());
}

TEST(VirtualSimulator, BatteryIsSentAtOnceAndThenOnChange) {
    RunningSimulator simulator;
    SimulatorClient client(simulator);
    requestBattery(client);
    ASSERT_TRUE(client.waitFor(simConnectRecvSimobjectData));
    simulator.setBattery(false);
    simulator.setBattery(true);
    simulator.setBattery(true);
    simulator.setBattery(false);
    ASSERT_TRUE(client.waitFor(simConnectRecvSimobjectData, 3));
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.wordsOf(batteryRequest), (Words{0, 1, 0}));
    const auto message = client.messagesOf(simConnectRecvSimobjectData).front();
    EXPECT_EQ(message, PeerBytes(simulatorMessage(8, wireWords({1, 0, 1, 1, 1, 1, 1, 0}))));
    EXPECT_TRUE(simulator.waitForText(Kind::Subscribed, "Electrical Master Battery:2"));
}

TEST(VirtualSimulator, EveryBatteryHasItsOwnState) {
    RunningSimulator simulator;
    simulator.setAircraftVariable("Electrical Master Battery:1", 1);
    SimulatorClient client(simulator);
    for (std::uint32_t number = 1; number <= 3; ++number) {
        SimConnect_AddToDataDefinition(client.get(), number,
                                       ("ELECTRICAL MASTER BATTERY:" + std::to_string(number)).c_str(), "Bool", 1, 0,
                                       simConnectUnused);
        SimConnect_RequestDataOnSimObject(client.get(), number, number, 0, 3, 1, 0, 0, 0);
    }
    ASSERT_TRUE(client.waitFor(simConnectRecvSimobjectData, 3));
    simulator.setAircraftVariable("LIGHT POTENTIOMETER:3", 1);
    simulator.setBattery(true);
    simulator.setAircraftVariable("ELECTRICAL MASTER BATTERY:1", 0);
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.wordsOf(1), (Words{1, 0}));
    EXPECT_EQ(client.wordsOf(2), (Words{0, 1}));
    EXPECT_EQ(client.wordsOf(3), Words{0});
}

TEST(VirtualSimulator, BatteryIsSentInTheRequestedType) {
    RunningSimulator simulator;
    simulator.setBattery(true);
    const std::vector<PeerBytes> payloads{wireWords({1}), wireWords({1, 0}), wireWords({0x3F800000}),
                                          wireWords({0, 0x3FF00000})};
    for (std::uint32_t type = 1; type <= 4; ++type) {
        SimulatorClient client(simulator);
        requestBattery(client, type);
        ASSERT_TRUE(client.waitFor(simConnectRecvSimobjectData));
        const auto message = client.messagesOf(simConnectRecvSimobjectData).front();
        EXPECT_EQ(PeerBytes(message.begin() + 40, message.end()), payloads[type - 1]) << type;
    }
}

TEST(VirtualSimulator, PeriodOnceSendsOnceAndNeverEndsARequest) {
    RunningSimulator simulator;
    SimulatorClient client(simulator);
    requestBattery(client);
    SimConnect_RequestDataOnSimObject(client.get(), 2, batteryDefinition, 0, 1, 0, 0, 0, 0);
    ASSERT_TRUE(client.waitFor(simConnectRecvSimobjectData, 2));
    SimConnect_RequestDataOnSimObject(client.get(), batteryRequest, batteryDefinition, 0, 0, 0, 0, 0, 0);
    ASSERT_TRUE(client.settle());
    simulator.setBattery(true);
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.messagesOf(simConnectRecvSimobjectData).size(), 2U);
}

TEST(VirtualSimulator, VariableRequestsAreRefusedWithTheirSendIdAndArgument) {
    RunningSimulator simulator;
    SimulatorClient client(simulator);
    // Send ids 2 upward: 1 was OPEN's.
    SimConnect_AddToDataDefinition(client.get(), 1, "NO SUCH VARIABLE", "Bool", 1, 0, 0);
    SimConnect_AddToDataDefinition(client.get(), 1, "ELECTRICAL MASTER BATTERY:2", "feet", 1, 0, 0);
    SimConnect_AddToDataDefinition(client.get(), 1, "ELECTRICAL MASTER BATTERY:2", "Bool", 5, 0, 0);
    SimConnect_RequestDataOnSimObject(client.get(), 1, 1, 0, 3, 1, 0, 0, 0);
    SimConnect_AddToDataDefinition(client.get(), 1, "ELECTRICAL MASTER BATTERY:2", "Bool", 1, 0, 0);
    SimConnect_RequestDataOnSimObject(client.get(), 1, 1, 9, 3, 1, 0, 0, 0);
    SimConnect_RequestDataOnSimObject(client.get(), 1, 1, 0, 5, 1, 0, 0, 0);
    ASSERT_TRUE(client.waitFor(simConnectRecvException, 6));
    EXPECT_EQ(client.exceptions(), (Exceptions{{7, 2, 2}, {7, 3, 3}, {18, 4, 4}, {3, 5, 2}, {3, 7, 3}, {27, 8, 4}}));
}

TEST(VirtualSimulator, ClientEventsAreRecordedByName) {
    RunningSimulator simulator;
    const SimulatorClient client(simulator);
    SimConnect_MapClientEventToSimEvent(client.get(), 1, "TOGGLE_MASTER_BATTERY");
    SimConnect_MapClientEventToSimEvent(client.get(), 2, "MobiFlight.Something");
    SimConnect_TransmitClientEvent(client.get(), 0, 2, 0, 1, 0x10);
    SimConnect_TransmitClientEvent(client.get(), 0, 1, 5, 1, 0x10);
    ASSERT_TRUE(simulator.waitForKind(Kind::ClientEvent, 2));
    EXPECT_EQ(simulator.texts(Kind::ClientEvent), (Texts{"MobiFlight.Something", "TOGGLE_MASTER_BATTERY"}));
    EXPECT_EQ(simulator.records().back().value, 5U);
}

TEST(VirtualSimulator, EventRequestsAreRefusedWithTheirSendIdAndArgument) {
    RunningSimulator simulator;
    SimulatorClient client(simulator);
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

TEST(VirtualSimulator, CallbackGetsTheRecordsInOrderAndMayUseTheControls) {
    RunningSimulator simulator;
    std::mutex mutex;
    std::vector<Kind> kinds;
    std::atomic<bool> controlled{false};
    simulator.setRecordCallback([&](const SimulatorRecord& record) {
        const std::lock_guard lock(mutex);
        kinds.push_back(record.kind);
        if (record.kind == Kind::Opened) {
            // Controls are allowed in here.
            simulator.setBattery(true);
            controlled = simulator.sessionCount() == 1;
        }
    });
    {
        SimulatorClient client(simulator);
        ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    }
    EXPECT_TRUE(waitUntil([&] {
        const std::lock_guard lock(mutex);
        return kinds == std::vector<Kind>{Kind::Connected, Kind::Opened, Kind::Closed};
    }));
    EXPECT_TRUE(controlled);
    simulator.setRecordCallback(nullptr);
}

TEST(VirtualSimulator, RecordsHaveTheirSessionAndRisingTimes) {
    RunningSimulator simulator;
    SimulatorClient first(simulator, "first");
    ASSERT_TRUE(first.waitFor(simConnectRecvOpen));
    SimulatorClient second(simulator, "second");
    ASSERT_TRUE(second.waitFor(simConnectRecvOpen));
    const auto records = simulator.records();
    ASSERT_EQ(records.size(), 4U);
    EXPECT_EQ(records[1].session, 1U);
    EXPECT_EQ(records[3].session, 2U);
    EXPECT_EQ(records[3].text, "second");
    for (std::size_t i = 1; i < records.size(); ++i) {
        EXPECT_LE(records[i - 1].time, records[i].time);
    }
    simulator.clearRecords();
    EXPECT_TRUE(simulator.records().empty());
}

TEST(VirtualSimulator, WaitingGivesUpAfterItsTime) {
    RunningSimulator simulator;
    constexpr std::chrono::milliseconds brief{10};
    EXPECT_FALSE(simulator.waitForKind(Kind::Opened, 1, brief));
    EXPECT_FALSE(simulator.waitForText(Kind::Command, "MF.Ping", 1, brief));
    EXPECT_FALSE(simulator.waitForSessionCount(1, brief));
    EXPECT_TRUE(simulator.waitForSessionCount(0, brief));
}

} // namespace
