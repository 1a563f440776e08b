#include "simulation/simulator/client_data_areas.h"
#include "simulation/simulator/data_requests.h"
#include "tests/unit/simulation/simulator_client.h"

namespace {

using Exceptions = std::vector<std::array<std::uint32_t, 3>>;
using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint32_t>;

constexpr std::uint32_t area = 31;
constexpr std::uint32_t definition = 32;
constexpr std::uint32_t request = 33;

// Periods and a flag of requests.
constexpr std::uint32_t eachFrame = 2;
constexpr std::uint32_t onSet = 3;
constexpr std::uint32_t onlyChanges = 1;

/// A client with a 4-byte definition at an offset of an area.
class AreaClient : public SimulatorClient {
public:
    explicit AreaClient(const VirtualSimulator& simulator, const char* name = "MobiFlight.LVars",
                        std::uint32_t offset = 0)
        : SimulatorClient(simulator) {
        SimConnect_MapClientDataNameToID(get(), name, area);
        SimConnect_AddToClientDataDefinition(get(), definition, offset, 4, 0, simConnectUnused);
    }

    void subscribe(std::uint32_t period = onSet, std::uint32_t flags = onlyChanges) {
        SimConnect_RequestClientData(get(), area, request, definition, period, flags, 0, 0, 0);
    }
    void set(std::uint32_t value) {
        Bytes data{static_cast<std::uint8_t>(value), 0, 0, 0};
        SimConnect_SetClientData(get(), area, definition, 0, 0, 4, data.data());
    }
    /// All values received, once everything sent so far has been answered.
    Words received() {
        EXPECT_TRUE(settle());
        return wordsOf(request);
    }
};

class ClientDataTest : public testing::Test {
protected:
    RunningSimulator simulator;
    AreaClient client{simulator};
};

TEST_F(ClientDataTest, ReachesEveryClientThatAskedIncludingTheWriter) {
    AreaClient reader(simulator);
    reader.subscribe();
    ASSERT_TRUE(reader.settle());
    client.subscribe();
    client.set(5);
    ASSERT_TRUE(reader.waitFor(simConnectRecvClientData));
    EXPECT_EQ(client.received(), Words{5});
    const Bytes expected{44, 0, 0, 0, 4, 0, 0, 0, 16, 0, 0, 0, 33, 0, 0, 0, 0, 0, 0, 0, 32, 0,
                         0,  0, 1, 0, 0, 0, 1, 0, 0,  0, 1, 0, 0,  0, 1, 0, 0, 0, 5, 0, 0,  0};
    EXPECT_EQ(reader.messagesOf(simConnectRecvClientData).front(), expected);
}

TEST_F(ClientDataTest, EqualBlockIsDeliveredAgainOnlyWithoutTheChangedFlag) {
    AreaClient reader(simulator);
    reader.subscribe(onSet, 0);
    ASSERT_TRUE(reader.settle());
    client.subscribe();
    for (const std::uint32_t value : {1U, 1U, 2U, 2U, 1U}) {
        client.set(value);
    }
    EXPECT_EQ(client.received(), (Words{1, 2, 1}));
    EXPECT_EQ(reader.received(), (Words{1, 1, 2, 2, 1}));
}

TEST_F(ClientDataTest, ChangeIsJudgedByTheDefinitionsBytesAlone) {
    AreaClient reader(simulator, "MobiFlight.LVars", 4);
    reader.subscribe();
    ASSERT_TRUE(reader.settle());
    client.set(9);
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(reader.received(), Words());
}

TEST_F(ClientDataTest, PeriodDecidesWhatIsDelivered) {
    struct Case {
        std::uint32_t period;
        Words delivered;
    };
    // The area holds 5 at the time of the request; then come 5 and 6.
    for (const Case& one : {Case{onSet, {5, 6}}, Case{periodOnce, {5}}, Case{eachFrame, {5, 6}}}) {
        SCOPED_TRACE(one.period);
        AreaClient reader(simulator);
        reader.set(5);
        reader.subscribe(one.period, one.period == eachFrame ? onlyChanges : 0);
        reader.set(5);
        reader.set(6);
        EXPECT_EQ(reader.received(), one.delivered);
    }
}

TEST_F(ClientDataTest, NeverEndsARequestAndAnotherOfItsIdReplacesIt) {
    client.subscribe();
    client.subscribe();
    client.set(1);
    client.subscribe(periodNever);
    client.set(2);
    EXPECT_EQ(client.received(), Words{1});
}

TEST_F(ClientDataTest, NamesAreFoundInAnyCase) {
    AreaClient other(simulator, "mobiflight.lvars");
    other.subscribe();
    other.set(3);
    EXPECT_EQ(other.received(), Words{3});
    EXPECT_TRUE(simulator.waitForText(SimulatorRecordKind::Subscribed, "MobiFlight.LVars"));
}

TEST_F(ClientDataTest, DefinitionOfSeveralPiecesIsOneBlock) {
    constexpr std::uint32_t pieces = definition + 1;
    SimConnect_AddToClientDataDefinition(client.get(), pieces, 8, 2, 0, simConnectUnused);
    // A FLOAT32 after the previous piece.
    SimConnect_AddToClientDataDefinition(client.get(), pieces, 0xFFFFFFFF, 0xFFFFFFFB, 0, simConnectUnused);
    SimConnect_AddToClientDataDefinition(client.get(), pieces, 0, 2, 0, simConnectUnused);
    SimConnect_AddToClientDataDefinition(client.get(), 40, 0, 16, 0, simConnectUnused);
    SimConnect_RequestClientData(client.get(), area, 40, 40, 3, 1, 0, 0, 0);
    Bytes data{1, 2, 3, 4, 5, 6, 7, 8};
    SimConnect_SetClientData(client.get(), area, pieces, 0, 0, 8, data.data());
    ASSERT_TRUE(client.settle());
    ASSERT_EQ(client.messagesOf(simConnectRecvClientData).size(), 1U);
    const Bytes message = client.messagesOf(simConnectRecvClientData).front();
    EXPECT_EQ(Bytes(message.begin() + 40, message.end()), (Bytes{7, 8, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 0, 0}));
}

TEST_F(ClientDataTest, TaggedDataFollowTheirIds) {
    constexpr std::uint32_t taggedPieces = definition + 1;
    constexpr std::uint32_t changedAndTagged = 3;
    SimConnect_AddToClientDataDefinition(client.get(), taggedPieces, 8, 2, 0, 70);
    SimConnect_AddToClientDataDefinition(client.get(), taggedPieces, 4, 1, 0, 71);
    SimConnect_RequestClientData(client.get(), area, request, taggedPieces, onSet, changedAndTagged, 0, 0, 0);
    for (Bytes block : {Bytes{71, 0, 0, 0, 1, 70, 0, 0, 0, 2, 3}, Bytes{71, 0, 0, 0, 9}}) {
        SimConnect_SetClientData(client.get(), area, taggedPieces, 1, 0, static_cast<std::uint32_t>(block.size()),
                                 block.data());
    }
    ASSERT_TRUE(client.settle());
    const auto messages = client.messagesOf(simConnectRecvClientData);
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(MessageLog::wordOf(messages[0], 36), 2U);
    EXPECT_EQ(Bytes(messages[0].begin() + 40, messages[0].end()), (Bytes{70, 0, 0, 0, 2, 3, 71, 0, 0, 0, 1}));
    EXPECT_EQ(MessageLog::wordOf(messages[1], 36), 1U);
    EXPECT_EQ(Bytes(messages[1].begin() + 40, messages[1].end()), (Bytes{71, 0, 0, 0, 9}));
}

TEST_F(ClientDataTest, RequestsAreRefusedWithTheirSendIdAndArgument) {
    // Send ids 1 to 3 were those of opening, mapping and defining.
    Bytes data(16);
    SimConnect_MapClientDataNameToID(client.get(), "Other", area);                  // 4: id taken
    SimConnect_MapClientDataNameToID(client.get(), "Nobody.Command", 50);           // 5
    SimConnect_AddToClientDataDefinition(client.get(), 51, 0, 0, 0, 0);             // 6: no size
    SimConnect_AddToClientDataDefinition(client.get(), 51, 8190, 4, 0, 0);          // 7: beyond all areas
    SimConnect_AddToClientDataDefinition(client.get(), 52, 4094, 4, 0, 0);          // 8
    SimConnect_RequestClientData(client.get(), 99, 1, definition, 3, 1, 0, 0, 0);   // 9: no area
    SimConnect_RequestClientData(client.get(), area, 1, 99, 3, 1, 0, 0, 0);         // 10: no definition
    SimConnect_RequestClientData(client.get(), area, 1, definition, 5, 1, 0, 0, 0); // 11: no period
    SimConnect_SetClientData(client.get(), 99, definition, 0, 0, 4, data.data());   // 12: no area
    SimConnect_SetClientData(client.get(), area, 99, 0, 0, 4, data.data());         // 13: no definition
    SimConnect_SetClientData(client.get(), 50, definition, 0, 0, 4, data.data());   // 14: nobody made it
    SimConnect_SetClientData(client.get(), area, 52, 0, 0, 4, data.data());         // 15: beyond the area
    SimConnect_SetClientData(client.get(), area, definition, 0, 0, 5, data.data()); // 16: wrong size
    SimConnect_SetClientData(client.get(), area, definition, 1, 0, 4, data.data()); // 17: no such datum
    ASSERT_TRUE(client.waitFor(simConnectRecvException, 12));
    const Exceptions expected{{29, 4, 2}, {19, 6, 3}, {31, 7, 2},  {3, 9, 1},   {3, 10, 3}, {27, 11, 4},
                              {3, 12, 1}, {3, 13, 2}, {31, 14, 1}, {31, 15, 1}, {2, 16, 5}, {30, 17, 6}};
    EXPECT_EQ(client.exceptions(), expected);
}

TEST_F(ClientDataTest, DeadRequestEndsTheOneWhoseIdItTakes) {
    client.subscribe();
    SimConnect_MapClientDataNameToID(client.get(), "Nobody", area + 10);
    SimConnect_RequestClientData(client.get(), area + 10, request, definition, onSet, onlyChanges, 0, 0, 0);
    client.set(1);
    EXPECT_EQ(client.received(), Words());
}

TEST(ClientDataWithoutTheModule, RequestBeforeTheAreaIsMadeStaysDead) {
    RunningSimulator simulator(Transport::Tcp, {.moduleInstalled = false});
    AreaClient client(simulator);
    for (const std::uint32_t period : {periodOnce, eachFrame, onSet}) {
        SimConnect_RequestClientData(client.get(), area, request + period, definition, period, 0, 0, 0, 0);
    }
    ASSERT_TRUE(client.settle());
    simulator.startModule();
    client.set(1);
    ASSERT_TRUE(client.settle());
    EXPECT_TRUE(client.messagesOf(simConnectRecvClientData).empty());
    EXPECT_EQ(client.exceptions().size(), 2U) << "only those of settling";
    client.subscribe();
    client.set(2);
    EXPECT_EQ(client.received(), Words{2});
    simulator.quit();
    EXPECT_FALSE(simulator.moduleRunning()) << "it is late in the next run too";
}

TEST(ClientDataAreas, LimitsAreThoseOfTheSimulator) {
    ClientDataAreas areas;
    EXPECT_EQ(areas.create("a", 0), AreaCreation::BadSize);
    EXPECT_EQ(areas.create("a", 8193), AreaCreation::BadSize);
    EXPECT_EQ(areas.create("a", 8192), AreaCreation::Created);
    EXPECT_EQ(areas.create("A", 1), AreaCreation::Exists);
    for (int i = 1; i < 128; ++i) {
        EXPECT_EQ(areas.create(std::to_string(i), 8192), AreaCreation::Created);
    }
    EXPECT_EQ(areas.create("c", 1), AreaCreation::NoRoom);
}

TEST(ClientDataAreas, BytesBeyondTheEndReadAsZeros) {
    const Bytes block{1, 2, 3};
    EXPECT_EQ(bytesOf(block, 1, 4), (Bytes{2, 3, 0, 0}));
    EXPECT_EQ(bytesOf(block, 3, 2), (Bytes{0, 0}));
    EXPECT_EQ(bytesOf(block, 100, 2), (Bytes{0, 0}));
    EXPECT_EQ(bytesOf(block, 0, 0), Bytes{});
}

} // namespace
