// The client library of our own as a DLL, loaded as the bridge loads one.

#include "platform/file_system.h"
#include "platform/windows/simconnect_dll.h"
#include "tests/unit/simulation/simulator_client.h"
#include "tests/unit/simulation/windows/configured_user.h"

#include <algorithm>

namespace {

using Kind = SimulatorRecordKind;

std::optional<SimConnectLibrary> builtLibrary(std::string& error) {
    const std::string program = systemPlatform().host.executablePath();
    const std::string buildFolder = FileSystem::parentPath(FileSystem::parentPath(program));
    return loadSimConnectDll(FileSystem::join(buildFolder, "simconnect-dll\\SimConnect.dll"), error);
}

class ClientLibrary : public testing::TestWithParam<Transport> {
protected:
    void SetUp() override {
        std::string error;
        const auto loaded = builtLibrary(error);
        ASSERT_TRUE(loaded) << error;
        library = *loaded;
        ASSERT_EQ(library.open(&handle, "by DLL", nullptr, 0, nullptr, 0), simConnectOk);
    }
    void TearDown() override {
        if (handle != nullptr) {
            library.close(handle);
        }
    }

    SimConnectResult dispatch() { return library.callDispatch(handle, &MessageLog::dispatchProc, &log); }
    bool dispatchUntil(std::uint32_t messageId) {
        return waitUntil([&] {
            EXPECT_EQ(dispatch(), simConnectOk);
            const auto ids = log.ids();
            return std::find(ids.begin(), ids.end(), messageId) != ids.end();
        });
    }
    bool dispatchUntilLost() {
        return waitUntil([&] { return dispatch() == simConnectRemoteDisconnect; });
    }

    RunningSimulator simulator{GetParam()};
    ConfiguredUser user{simulator.endpoint()};
    SimConnectLibrary library;
    SimConnectHandle handle = nullptr;
    MessageLog log;
};

INSTANTIATE_TEST_SUITE_P(Transports, ClientLibrary, testing::ValuesIn(transports()), transportName);

TEST_P(ClientLibrary, OpensUnderItsName) {
    EXPECT_TRUE(dispatchUntil(simConnectRecvOpen));
    EXPECT_TRUE(simulator.waitForText(Kind::Opened, "by DLL"));
}

TEST_P(ClientLibrary, TellsOfTheBattery) {
    simulator.setBattery(true);
    EXPECT_EQ(library.addToDataDefinition(handle, 1, "ELECTRICAL MASTER BATTERY:2", "Bool", simConnectDataTypeInt32,
                                          0.0F, simConnectUnused),
              simConnectOk);
    EXPECT_EQ(library.requestDataOnSimObject(handle, 1, 1, 0, simConnectPeriodSimFrame, 1, 0, 0, 0), simConnectOk);
    ASSERT_TRUE(dispatchUntil(simConnectRecvSimobjectData));
    EXPECT_EQ(MessageLog::wordOf(log.messages.back(), 40), 1U);
}

TEST_P(ClientLibrary, FiresEvents) {
    EXPECT_EQ(library.mapClientEventToSimEvent(handle, 1, "AP_MASTER"), simConnectOk);
    EXPECT_EQ(library.transmitClientEvent(handle, 0, 1, 0, 1, 0x10), simConnectOk);
    EXPECT_TRUE(simulator.waitForText(Kind::ClientEvent, "AP_MASTER"));
}

TEST_P(ClientLibrary, TalksWithTheModule) {
    EXPECT_EQ(library.mapClientDataNameToId(handle, "MobiFlight.Command", 1), simConnectOk);
    EXPECT_EQ(library.mapClientDataNameToId(handle, "MobiFlight.Response", 2), simConnectOk);
    EXPECT_EQ(library.addToClientDataDefinition(handle, 1, 0, 256, 0.0F, simConnectUnused), simConnectOk);
    EXPECT_EQ(library.requestClientData(handle, 2, 7, 1, simConnectClientDataPeriodOnSet, 1, 0, 0, 0), simConnectOk);
    std::array<char, 256> command{"MF.Ping"};
    EXPECT_EQ(library.setClientData(handle, 1, 1, 0, 0, 256, command.data()), simConnectOk);
    ASSERT_TRUE(dispatchUntil(simConnectRecvClientData));
    const auto& answer = log.messages.back();
    EXPECT_EQ(std::string(answer.begin() + 40, answer.begin() + 48), std::string("MF.Pong\0", 8));
}

TEST_P(ClientLibrary, TellsOfTheSimulatorsQuit) {
    ASSERT_TRUE(dispatchUntil(simConnectRecvOpen));
    simulator.quit();
    EXPECT_TRUE(dispatchUntilLost());
    EXPECT_EQ(log.ids().back(), simConnectRecvQuit);
    EXPECT_EQ(library.close(handle), simConnectOk);
    EXPECT_EQ(library.open(&handle, "late", nullptr, 0, nullptr, 0), simConnectFail);
    EXPECT_EQ(handle, nullptr);
}

TEST_P(ClientLibrary, SurvivesTheSimulatorsDeathInTheMiddleOfAMessage) {
    ASSERT_TRUE(dispatchUntil(simConnectRecvOpen));
    simulator.cutMessage();
    EXPECT_TRUE(dispatchUntilLost());
    EXPECT_EQ(log.messages.size(), 1U);
}

TEST_P(ClientLibrary, SurvivesTheEndOfItsProgramWithASessionOpen) {
    ASSERT_TRUE(dispatchUntil(simConnectRecvOpen));
    // Left open: the library tidies up when the test program ends, which must not hang.
    handle = nullptr;
}

} // namespace
