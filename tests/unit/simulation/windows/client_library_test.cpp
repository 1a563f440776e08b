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
        ASSERT_TRUE(dispatchUntil(simConnectRecvOpen));
    }

    SimConnectResult dispatch() { return library.callDispatch(handle, &MessageLog::dispatchProc, &log); }
    bool dispatchUntil(std::uint32_t messageId) {
        return waitUntil([&] {
            EXPECT_EQ(dispatch(), simConnectOk);
            return std::ranges::count(log.ids(), messageId) > 0;
        });
    }

    RunningSimulator simulator{GetParam()};
    ConfiguredUser user{simulator.endpoint()};
    SimConnectLibrary library;
    SimConnectHandle handle = nullptr;
    MessageLog log;
};

INSTANTIATE_TEST_SUITE_P(Transports, ClientLibrary, testing::ValuesIn(transports()), transportName);

} // namespace

TEST_P(ClientLibrary, CarriesOutEveryOperationUntilTheSimulatorQuits) {
    EXPECT_TRUE(simulator.waitForText(Kind::Opened, "by DLL"));
    simulator.setBattery(true);
    EXPECT_EQ(library.addToDataDefinition(handle, 1, "ELECTRICAL MASTER BATTERY:2", "Bool", simConnectDataTypeInt32,
                                          0.0F, simConnectUnused),
              simConnectOk);
    EXPECT_EQ(library.requestDataOnSimObject(handle, 1, 1, 0, simConnectPeriodSimFrame, 1, 0, 0, 0), simConnectOk);
    ASSERT_TRUE(dispatchUntil(simConnectRecvSimobjectData));
    EXPECT_EQ(MessageLog::wordOf(log.messages.back(), 40), 1U);
    EXPECT_EQ(library.mapClientEventToSimEvent(handle, 1, "AP_MASTER"), simConnectOk);
    EXPECT_EQ(library.transmitClientEvent(handle, 0, 1, 0, 1, 0x10), simConnectOk);
    EXPECT_TRUE(simulator.waitForText(Kind::ClientEvent, "AP_MASTER"));
    EXPECT_EQ(library.mapClientDataNameToId(handle, "MobiFlight.Command", 1), simConnectOk);
    EXPECT_EQ(library.mapClientDataNameToId(handle, "MobiFlight.Response", 2), simConnectOk);
    EXPECT_EQ(library.addToClientDataDefinition(handle, 1, 0, 256, 0.0F, simConnectUnused), simConnectOk);
    EXPECT_EQ(library.requestClientData(handle, 2, 7, 1, simConnectClientDataPeriodOnSet, 1, 0, 0, 0), simConnectOk);
    std::array<char, 256> command{"MF.Ping"};
    EXPECT_EQ(library.setClientData(handle, 1, 1, 0, 0, 256, command.data()), simConnectOk);
    ASSERT_TRUE(dispatchUntil(simConnectRecvClientData));
    EXPECT_EQ(std::string(log.messages.back().begin() + 40, log.messages.back().begin() + 47), "MF.Pong");
    simulator.quit();
    EXPECT_TRUE(waitUntil([&] { return dispatch() == simConnectRemoteDisconnect; }));
    EXPECT_EQ(log.ids().back(), simConnectRecvQuit);
    EXPECT_EQ(library.close(handle), simConnectOk);
    EXPECT_EQ(library.open(&handle, "late", nullptr, 0, nullptr, 0), simConnectFail);
    EXPECT_EQ(handle, nullptr);
}

TEST_P(ClientLibrary, SurvivesTheEndOfItsProgramWithASessionOpen) {
    // Left open: the library cleans up when the test program ends, which must not hang.
    handle = nullptr;
}
