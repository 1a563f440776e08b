#include "tests/unit/sim/sim_client_fixture.h"

namespace {

const std::string openCall = R"(Open("bridge", null, 0, null, 0))";
const std::string defineCall = R"(AddToDataDefinition(h1, 1, "ELECTRICAL MASTER BATTERY:2", "Bool", 1, 0, 0xFFFFFFFF))";
const std::string requestCall = "RequestDataOnSimObject(h1, 1, 1, 0, 3, 1, 0, 0, 0)";

} // namespace

class SimClientSession : public SimClientFixture {
protected:
    ~SimClientSession() override { stop(); }

    /// Has the battery values and the client data blocks written down as lines.
    void watch() {
        client.setBatteryCallback([this](bool on) { received.push_back(on ? "battery on" : "battery off"); });
        client.setClientDataCallback([this](std::uint32_t id, const std::uint8_t* data, std::uint32_t size) {
            received.push_back(std::to_string(id) + ":" + std::string(data, data + size));
        });
    }

    Lines received;
};

TEST_F(SimClientSession, OpeningAsksForTheBattery) {
    connect();
    EXPECT_EQ(sim.calls(), (Lines{openCall, defineCall, requestCall}));
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected"}));
    EXPECT_EQ(connections(), (std::vector{true}));
}

TEST_F(SimClientSession, WatchesTheBatteryThatIsChosen) {
    client.setBatteryIndex(16);
    connect();
    EXPECT_EQ(sim.calls().at(1),
              R"(AddToDataDefinition(h1, 1, "ELECTRICAL MASTER BATTERY:16", "Bool", 1, 0, 0xFFFFFFFF))");
}

TEST_F(SimClientSession, SucceedsWithoutBatteryWhenItsDefinitionFails) {
    sim.script(SimCall::AddToDataDefinition, {simConnectFail});
    connect();
    EXPECT_EQ(sim.calls(), (Lines{openCall, defineCall}));
    EXPECT_EQ(log.lines(),
              (Lines{"[WARN] SimConnect data definitions failed: SimConnect_AddToDataDefinition failed (0x80004005)",
                     "[INFO] SimConnect connected"}));
}

TEST_F(SimClientSession, SucceedsWithoutBatteryWhenItsRequestFails) {
    sim.script(SimCall::RequestDataOnSimObject, {-1});
    connect();
    EXPECT_EQ(sim.calls(), (Lines{openCall, defineCall, requestCall}));
    EXPECT_EQ(log.lines(),
              (Lines{"[WARN] SimConnect data request failed: SimConnect_RequestDataOnSimObject failed (0xFFFFFFFF)",
                     "[INFO] SimConnect connected"}));
}

TEST_F(SimClientSession, PositiveResultsAreSuccesses) {
    sim.setResult(SimCall::Open, 1);
    sim.setResult(SimCall::AddToDataDefinition, 1);
    sim.setResult(SimCall::RequestDataOnSimObject, 1);
    sim.setResult(SimCall::CallDispatch, 1);
    connect();
    poll();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected"}));
}

TEST_F(SimClientSession, MissingHandleIsNamedBeforeTheDefinition) {
    SimConnectClientAccess::watchBattery(client);
    EXPECT_EQ(sim.calls(), Lines());
    EXPECT_EQ(log.lines(), (Lines{"[WARN] SimConnect data definitions failed: SimConnect handle unavailable"}));
}

TEST_F(SimClientSession, MissingHandleIsNamedBeforeTheRequest) {
    SimConnectLibrary library = sim.library();
    SimConnectClient* other = nullptr;
    library.addToDataDefinition = [&](auto...) {
        SimConnectClientAccess::disconnect(*other);
        return simConnectOk;
    };
    SimConnectClient losing(library, host.record());
    other = &losing;
    EXPECT_TRUE(SimConnectClientAccess::openSession(losing, error));
    EXPECT_EQ(sim.calls(), (Lines{R"(Open("", null, 0, null, 0))", "Close(h1)"}));
    EXPECT_EQ(log.linesWith("WARN"), (Lines{"[WARN] SimConnect data request failed: SimConnect handle unavailable"}));
}

TEST_F(SimClientSession, SurplusHandleIsClosedWithoutAWord) {
    connect();
    sim.takeCalls();
    const SimConnectHandle before = client.connectedHandle();
    EXPECT_TRUE(SimConnectClientAccess::openSession(client, error));
    EXPECT_EQ(sim.calls(), (Lines{openCall, "Close(h2)"}));
    EXPECT_EQ(client.connectedHandle(), before);
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected"}));
    EXPECT_EQ(connections(), (std::vector{true}));
}

TEST_F(SimClientSession, OpenMessageIsLogged) {
    connect();
    sim.deliverOpen();
    poll();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected", "[INFO] SimConnect session opened"}));
}

TEST_F(SimClientSession, BatteryIsOnForEveryValueButZero) {
    watch();
    connect();
    for (const std::int32_t value : {1, 0, 2, -1, 0x01000000})
        sim.deliverBattery(value);
    poll();
    EXPECT_EQ(received, (Lines{"battery on", "battery off", "battery on", "battery on", "battery on"}));
}

TEST_F(SimClientSession, DataOfOtherRequestsLeaveTheBatteryAlone) {
    watch();
    connect();
    for (const std::uint32_t id : {0U, 2U, 0x101U, 0xFFFFFFFFU})
        sim.deliverSimobjectData(id, {1, 0, 0, 0});
    poll();
    EXPECT_TRUE(sim.allDelivered());
    EXPECT_EQ(received, Lines());
}

TEST_F(SimClientSession, OnlyTheFirstWordOfTheBatterysDataCounts) {
    watch();
    connect();
    sim.deliverSimobjectData(1, {0, 0, 0, 0, 1, 1, 1, 1});
    poll();
    EXPECT_EQ(received, (Lines{"battery off"}));
}

TEST_F(SimClientSession, ClientDataArriveWithoutTheirHeader) {
    watch();
    connect();
    sim.deliverClientData(0x1200, {'a', 'b', 'c'});
    sim.deliverClientData(7, {'x'});
    poll();
    EXPECT_EQ(received, (Lines{"4608:abc", "7:x"}));
}

TEST_F(SimClientSession, ClientDataMessageOfJustItsHeaderReachesNobody) {
    watch();
    connect();
    sim.deliverClientData(0x1200, {});
    poll();
    EXPECT_EQ(sim.calls().back(), "CallDispatch: message 16 of 40");
    EXPECT_EQ(received, Lines());
}

TEST_F(SimClientSession, TruncatedMessagesAreIgnored) {
    watch();
    connect();
    const auto whole = FakeSimConnect::dataMessage(simConnectRecvSimobjectData, 1, {1, 1, 1, 1});
    const auto client40 = FakeSimConnect::dataMessage(simConnectRecvClientData, 1, {});
    const auto quit = FakeSimConnect::message(simConnectRecvQuit, {});
    for (std::size_t size = 0; size < whole.size(); ++size)
        sim.deliver({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
    for (std::size_t size = 0; size < client40.size(); ++size)
        sim.deliver({client40.begin(), client40.begin() + static_cast<std::ptrdiff_t>(size)});
    for (std::size_t size = 0; size < quit.size(); ++size)
        sim.deliver({quit.begin(), quit.begin() + static_cast<std::ptrdiff_t>(size)});
    poll();
    EXPECT_TRUE(sim.allDelivered());
    EXPECT_EQ(received, Lines());
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected"}));
}

TEST_F(SimClientSession, ExceptionsOfTheSimulatorAndUnknownMessagesAreIgnored) {
    watch();
    connect();
    for (const std::uint32_t id : {0U, 1U, 4U, 5U, 9U, 15U, 17U, 27U, 0xFFFFFFFFU})
        sim.deliver(FakeSimConnect::message(id, FakeSimConnect::Bytes(64)));
    poll();
    EXPECT_TRUE(sim.allDelivered());
    EXPECT_EQ(received, Lines());
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected"}));
}

TEST_F(SimClientSession, NullMessageOrContextIsIgnored) {
    SimConnectRecv quit{12, 4, simConnectRecvQuit};
    SimConnectClientAccess::dispatch(nullptr, 12, &client);
    SimConnectClientAccess::dispatch(&quit, 12, nullptr);
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(SimClientSession, DataWithoutCallbacksAreDropped) {
    connect();
    sim.deliverBattery(1);
    sim.deliverClientData(0x1200, {'a'});
    poll();
    EXPECT_TRUE(sim.allDelivered());
    EXPECT_TRUE(client.isConnected());
}

TEST_F(SimClientSession, CallbacksMayReplaceThemselves) {
    connect();
    client.setBatteryCallback([this](bool) {
        received.emplace_back("first");
        client.setBatteryCallback([this](bool) { received.emplace_back("second"); });
    });
    client.setClientDataCallback([this](std::uint32_t, const std::uint8_t*, std::uint32_t) {
        received.emplace_back("only");
        client.setClientDataCallback(nullptr);
    });
    for (int time = 0; time < 2; ++time) {
        sim.deliverBattery(1);
        sim.deliverClientData(1, {'a'});
    }
    poll();
    EXPECT_EQ(received, (Lines{"first", "only", "second"}));
}

TEST_F(SimClientSession, MessagesBehindAQuitAreNotHandled) {
    watch();
    connect();
    sim.deliverQuit();
    sim.deliverBattery(1);
    poll();
    EXPECT_EQ(received, Lines());
}

TEST_F(SimClientSession, ConnectionCallbackCanUseTheNewSession) {
    host.setProcesses({"FlightSimulator.exe"});
    std::atomic<bool> mapped{false};
    std::string reason;
    ASSERT_TRUE(client.start(
        "bridge", [&](bool connected) { mapped = connected && client.mapClientDataName("Area", 0x1000, reason); },
        nullptr, error));
    ASSERT_EQ(host.waitForSleep(), 15);
    EXPECT_TRUE(mapped);
    EXPECT_EQ(sim.calls().back(), R"(MapClientDataNameToID(h1, "Area", 0x1000))");
    stop();
}

TEST_F(SimClientSession, ConnectionIsAnnouncedBeforeItIsLogged) {
    host.setProcesses({"FlightSimulator.exe"});
    ASSERT_TRUE(client.start(
        "bridge", [](bool connected) { logInfo(connected ? "up" : "down"); }, nullptr, error));
    ASSERT_EQ(host.waitForSleep(), 15);
    stop();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] up", "[INFO] SimConnect connected",
                                  "[WARN] SimConnect disconnected: shutdown", "[INFO] down"}));
}
