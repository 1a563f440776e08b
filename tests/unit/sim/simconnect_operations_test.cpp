#include "tests/unit/sim/sim_client_fixture.h"

class SimClientOperations : public SimClientFixture {
protected:
    ~SimClientOperations() override { stop(); }

    bool transmit(const std::string& name) { return client.transmitEvent(name, 0, error); }

    /// The calls made by what is done to an open session.
    template <typename Action>
    Lines callsOf(Action action) {
        sim.takeCalls();
        action();
        return sim.takeCalls();
    }

    void reconnect() {
        sim.script(SimCall::CallDispatch, {simConnectFail});
        poll();
        poll();
        sim.takeCalls();
    }

    static constexpr const char* notConnected = "SimConnect is not connected";
};

TEST_F(SimClientOperations, EmptyEventNameIsReportedEvenWithoutASession) {
    EXPECT_FALSE(transmit(""));
    EXPECT_EQ(error, "SimConnect event name is empty");
    connect();
    EXPECT_EQ(callsOf([&] { EXPECT_FALSE(transmit("")); }), Lines());
}

TEST_F(SimClientOperations, WithoutASessionAllAreRefused) {
    EXPECT_FALSE(transmit("AP_MASTER"));
    EXPECT_EQ(error, notConnected);
    std::string mapError;
    std::string defineError;
    std::string requestError;
    EXPECT_FALSE(client.mapClientDataName("Area", 1, mapError));
    EXPECT_FALSE(client.addClientDataDefinition(1, 0, 256, defineError));
    EXPECT_FALSE(client.requestClientData(1, 2, 3, requestError));
    EXPECT_EQ((Lines{mapError, defineError, requestError}), Lines(3, notConnected));
    EXPECT_EQ(client.connectedHandle(), nullptr);
    EXPECT_EQ(sim.calls(), Lines());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(SimClientOperations, SessionThatIsStillOpeningIsNotConnected) {
    std::atomic<bool> refused{false};
    sim.setHook([&](SimCall call) {
        if (call == SimCall::AddToDataDefinition)
            refused = !transmit("AP_MASTER") && client.connectedHandle() == nullptr && !client.isConnected();
    });
    connect();
    EXPECT_TRUE(refused);
    EXPECT_EQ(error, notConnected);
}

TEST_F(SimClientOperations, RepeatedEventIsMappedOnce) {
    connect();
    EXPECT_EQ(callsOf([&] {
                  EXPECT_TRUE(transmit("AP_MASTER"));
                  EXPECT_TRUE(transmit("AP_MASTER"));
              }),
              (Lines{R"(MapClientEventToSimEvent(h1, 1, "AP_MASTER"))", "TransmitClientEvent(h1, 0, 1, 0, 1, 16)",
                     "TransmitClientEvent(h1, 0, 1, 0, 1, 16)"}));
}

TEST_F(SimClientOperations, EventNamesAreToldApartByCase) {
    connect();
    EXPECT_EQ(callsOf([&] {
                  EXPECT_TRUE(transmit("AP_MASTER"));
                  EXPECT_TRUE(transmit("ap_master"));
              }),
              (Lines{R"(MapClientEventToSimEvent(h1, 1, "AP_MASTER"))", "TransmitClientEvent(h1, 0, 1, 0, 1, 16)",
                     R"(MapClientEventToSimEvent(h1, 2, "ap_master"))", "TransmitClientEvent(h1, 0, 2, 0, 1, 16)"}));
}

TEST_F(SimClientOperations, NewSessionMapsEventsFromOneAgain) {
    connect();
    EXPECT_TRUE(transmit("A"));
    EXPECT_TRUE(transmit("B"));
    reconnect();
    EXPECT_EQ(callsOf([&] { EXPECT_TRUE(transmit("B")); }),
              (Lines{R"(MapClientEventToSimEvent(h2, 1, "B"))", "TransmitClientEvent(h2, 0, 1, 0, 1, 16)"}));
}

TEST_F(SimClientOperations, EventDataAreAlwaysZero) {
    connect();
    EXPECT_TRUE(client.transmitEvent("A", 42, error));
    EXPECT_EQ(sim.calls().back(), "TransmitClientEvent(h1, 0, 1, 0, 1, 16)");
}

TEST_F(SimClientOperations, FailedMappingSpendsItsId) {
    connect();
    sim.script(SimCall::MapClientEventToSimEvent, {simConnectFail});
    EXPECT_EQ(callsOf([&] { EXPECT_FALSE(transmit("A")); }), (Lines{R"(MapClientEventToSimEvent(h1, 1, "A"))"}));
    EXPECT_EQ(error, "SimConnect_MapClientEventToSimEvent failed (0x80004005)");
    EXPECT_EQ(callsOf([&] { EXPECT_TRUE(transmit("A")); }),
              (Lines{R"(MapClientEventToSimEvent(h1, 2, "A"))", "TransmitClientEvent(h1, 0, 2, 0, 1, 16)"}));
}

TEST_F(SimClientOperations, FailedTransmissionKeepsTheMapping) {
    connect();
    sim.script(SimCall::TransmitClientEvent, {-2});
    EXPECT_FALSE(transmit("A"));
    EXPECT_EQ(error, "SimConnect_TransmitClientEvent failed (0xFFFFFFFE)");
    EXPECT_EQ(callsOf([&] { EXPECT_TRUE(transmit("A")); }), (Lines{"TransmitClientEvent(h1, 0, 1, 0, 1, 16)"}));
}

TEST_F(SimClientOperations, SuccessLeavesTheErrorAlone) {
    connect();
    error = "before";
    EXPECT_TRUE(transmit("A"));
    EXPECT_TRUE(client.mapClientDataName("Area", 1, error));
    EXPECT_EQ(error, "before");
}

TEST_F(SimClientOperations, ClientDataCallsPassTheirArguments) {
    connect();
    EXPECT_EQ(callsOf([&] {
                  EXPECT_TRUE(client.mapClientDataName("MobiFlight.Command", 0x1000, error));
                  EXPECT_TRUE(client.addClientDataDefinition(0x1100, 0, 256, error));
                  EXPECT_TRUE(client.requestClientData(0x1001, 0x1200, 0x1101, error));
              }),
              (Lines{R"(MapClientDataNameToID(h1, "MobiFlight.Command", 0x1000))",
                     "AddToClientDataDefinition(h1, 0x1100, 0, 256, 0, 0xFFFFFFFF)",
                     "RequestClientData(h1, 0x1001, 0x1200, 0x1101, 3, 1, 0, 0, 0)"}));
}

TEST_F(SimClientOperations, DefinitionsAlwaysBeginAtOffsetZero) {
    connect();
    EXPECT_TRUE(client.addClientDataDefinition(1, 128, 16, error));
    EXPECT_EQ(sim.calls().back(), "AddToClientDataDefinition(h1, 1, 0, 16, 0, 0xFFFFFFFF)");
}

TEST_F(SimClientOperations, FailedClientDataCallsAreNamed) {
    connect();
    sim.setResult(SimCall::MapClientDataNameToId, simConnectFail);
    sim.setResult(SimCall::AddToClientDataDefinition, simConnectInvalidArgument);
    sim.setResult(SimCall::RequestClientData, -1);
    EXPECT_FALSE(client.mapClientDataName("Area", 1, error));
    EXPECT_EQ(error, "SimConnect_MapClientDataNameToID failed (0x80004005)");
    EXPECT_FALSE(client.addClientDataDefinition(1, 0, 256, error));
    EXPECT_EQ(error, "SimConnect_AddToClientDataDefinition failed (0x80070057)");
    EXPECT_FALSE(client.requestClientData(1, 2, 3, error));
    EXPECT_EQ(error, "SimConnect_RequestClientData failed (0xFFFFFFFF)");
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected"}));
}

TEST_F(SimClientOperations, HandleIsGivenOutWhileConnected) {
    EXPECT_EQ(client.connectedHandle(), nullptr);
    connect();
    EXPECT_NE(client.connectedHandle(), nullptr);
    stop();
    EXPECT_EQ(client.connectedHandle(), nullptr);
    EXPECT_FALSE(transmit("A"));
    EXPECT_EQ(error, notConnected);
}

TEST_F(SimClientOperations, ThreadsThatShareANameMapItOnce) {
    connect();
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([this] {
            std::string reason;
            for (int time = 0; time < 50; ++time) {
                EXPECT_TRUE(client.transmitEvent("A", 0, reason));
                EXPECT_TRUE(client.transmitEvent("B", 0, reason));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(sim.count(SimCall::MapClientEventToSimEvent), 2U);
    EXPECT_EQ(sim.count(SimCall::TransmitClientEvent), 400U);
}

TEST_F(SimClientOperations, SessionsMayEndAndCallbacksChangeUnderTheCallers) {
    host.letSleepsPass();
    host.setProcesses({"FlightSimulator.exe"});
    ASSERT_TRUE(start());
    std::atomic<bool> done{false};
    std::thread caller([&] {
        std::string reason;
        while (!done) {
            client.transmitEvent("A", 0, reason);
            client.mapClientDataName("Area", 1, reason);
            client.isConnected();
        }
    });
    std::thread setter([&] {
        while (!done) {
            client.setBatteryCallback([](bool) {});
            client.setClientDataCallback(nullptr);
            client.setQuitCallback(nullptr);
        }
    });
    for (std::size_t session = 0; session < 20; ++session) {
        EXPECT_TRUE(waitUntil([&] { return client.isConnected(); }));
        sim.deliverBattery(1);
        sim.deliverClientData(1, {'a'});
        sim.deliverQuit();
        EXPECT_TRUE(waitUntil([&] { return connections().size() >= 2 * session + 2; }));
    }
    done = true;
    caller.join();
    setter.join();
    stop();
    EXPECT_FALSE(sim.isOpen());
}
