#include "tests/support/wait_until.h"
#include "tests/unit/sim/sim_client_session_fixture.h"

#include <thread>

namespace {

constexpr const char* notConnected = "SimConnect is not connected";

const std::string transmission1 = "TransmitClientEvent(h1, 0, 1, 0, 1, 16)";
const std::string transmission2 = "TransmitClientEvent(h1, 0, 2, 0, 1, 16)";

} // namespace

class SessionOperations : public SessionFixture {
protected:
    bool transmit(const std::string& name) { return session.transmitEvent(name, error); }
};

TEST_F(SessionOperations, WithoutASessionAreRefused) {
    std::string errors[4];
    EXPECT_FALSE(session.transmitEvent("AP_MASTER", errors[0]));
    EXPECT_FALSE(session.mapClientDataName("Area", 1, errors[1]));
    EXPECT_FALSE(session.addClientDataDefinition(1, 256, errors[2]));
    EXPECT_FALSE(session.requestClientData(1, 2, 3, errors[3]));
    EXPECT_EQ(Lines(std::begin(errors), std::end(errors)), Lines(4, notConnected));
    EXPECT_EQ(session.connectedHandle(), nullptr);
    EXPECT_FALSE(transmit(""));
    EXPECT_EQ(error, "SimConnect event name is empty");
    EXPECT_EQ(sim.calls(), Lines());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(SessionOperations, WhileTheSessionOpensAreRefused) {
    bool refused = false;
    sim.setHook([&](SimCall call) {
        if (call == SimCall::AddToDataDefinition) {
            refused = !transmit("AP_MASTER") && session.connectedHandle() == nullptr && !session.isConnected();
        }
    });
    EXPECT_TRUE(open());
    EXPECT_TRUE(refused);
    EXPECT_EQ(error, notConnected);
}

TEST_F(SessionOperations, EventsAreMappedOnceForEachNameWhoseCaseCounts) {
    connect();
    for (const char* name : {"AP_MASTER", "AP_MASTER", "ap_master"}) {
        EXPECT_TRUE(transmit(name));
    }
    EXPECT_EQ(sim.calls(), (Lines{R"(MapClientEventToSimEvent(h1, 1, "AP_MASTER"))", transmission1, transmission1,
                                  R"(MapClientEventToSimEvent(h1, 2, "ap_master"))", transmission2}));
}

TEST_F(SessionOperations, EventsOfANewSessionAreMappedFromOneAgain) {
    connect();
    EXPECT_TRUE(transmit("A") && transmit("B"));
    session.close("test");
    connect();
    EXPECT_TRUE(transmit("B"));
    EXPECT_EQ(sim.calls(),
              (Lines{R"(MapClientEventToSimEvent(h2, 1, "B"))", "TransmitClientEvent(h2, 0, 1, 0, 1, 16)"}));
}

TEST_F(SessionOperations, FailedMappingSpendsItsIdAndAFailedTransmissionKeepsTheMapping) {
    connect();
    sim.script(SimCall::MapClientEventToSimEvent, {simConnectFail});
    EXPECT_FALSE(transmit("A"));
    EXPECT_EQ(error, "SimConnect_MapClientEventToSimEvent failed (0x80004005)");
    sim.script(SimCall::TransmitClientEvent, {-2});
    EXPECT_FALSE(transmit("A"));
    EXPECT_EQ(error, "SimConnect_TransmitClientEvent failed (0xFFFFFFFE)");
    EXPECT_TRUE(transmit("A"));
    EXPECT_EQ(sim.calls(), (Lines{R"(MapClientEventToSimEvent(h1, 1, "A"))", R"(MapClientEventToSimEvent(h1, 2, "A"))",
                                  transmission2, transmission2}));
}

TEST_F(SessionOperations, FailedClientDataCallsAreNamed) {
    connect();
    sim.setResult(SimCall::MapClientDataNameToId, simConnectFail);
    sim.setResult(SimCall::AddToClientDataDefinition, simConnectInvalidArgument);
    sim.setResult(SimCall::RequestClientData, -1);
    EXPECT_FALSE(session.mapClientDataName("Area", 1, error));
    EXPECT_EQ(error, "SimConnect_MapClientDataNameToID failed (0x80004005)");
    EXPECT_FALSE(session.addClientDataDefinition(1, 256, error));
    EXPECT_EQ(error, "SimConnect_AddToClientDataDefinition failed (0x80070057)");
    EXPECT_FALSE(session.requestClientData(1, 2, 3, error));
    EXPECT_EQ(error, "SimConnect_RequestClientData failed (0xFFFFFFFF)");
    EXPECT_EQ(log.lines(), Lines());
}

/// A library call may take long; the others that use the session must not wait for it.
class SessionLocks : public SessionFixture {
protected:
    /// Whether another thread gets the handle in the midst of the first such call that `action` makes.
    bool answersDuring(SimCall watched, const std::function<void()>& action) {
        std::thread other;
        std::atomic<bool> answered{false};
        bool answeredDuringTheCall = false;
        sim.setHook([&](SimCall call) {
            if (call != watched || other.joinable()) {
                return;
            }
            other = std::thread([&] {
                session.connectedHandle();
                answered = true;
            });
            answeredDuringTheCall = waitUntil([&] { return answered.load(); });
        });
        action();
        sim.setHook(nullptr);
        other.join();
        return answeredDuringTheCall;
    }
};

TEST_F(SessionLocks, LibraryCallsRunUnlocked) {
    const auto reopen = [this] {
        session.close("test");
        EXPECT_TRUE(open());
    };
    const struct {
        SimCall call;
        std::function<void()> action;
    } rows[] = {
        {SimCall::Open, reopen},
        {SimCall::AddToDataDefinition, reopen},
        {SimCall::RequestDataOnSimObject, reopen},
        {SimCall::Close, reopen},
        {SimCall::CallDispatch, [this] { session.poll(); }},
        {SimCall::TransmitClientEvent, [this] { EXPECT_TRUE(session.transmitEvent("A", error)); }},
        {SimCall::MapClientDataNameToId, [this] { EXPECT_TRUE(session.mapClientDataName("Area", 1, error)); }},
        {SimCall::AddToClientDataDefinition, [this] { EXPECT_TRUE(session.addClientDataDefinition(1, 256, error)); }},
        {SimCall::RequestClientData, [this] { EXPECT_TRUE(session.requestClientData(1, 2, 3, error)); }},
    };
    connect();
    for (const auto& row : rows) {
        EXPECT_TRUE(answersDuring(row.call, row.action)) << "row " << &row - rows;
    }
}

TEST_F(SessionLocks, ThreadsThatShareANameMapItOnce) {
    connect();
    std::vector<std::thread> threads(4);
    for (std::thread& thread : threads) {
        thread = std::thread([this] {
            std::string reason;
            for (int time = 0; time < 50; ++time) {
                EXPECT_TRUE(session.transmitEvent("A", reason) && session.transmitEvent("B", reason));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(sim.count(SimCall::MapClientEventToSimEvent), 2U);
    EXPECT_EQ(sim.count(SimCall::TransmitClientEvent), 400U);
}

TEST_F(SessionLocks, SessionsMayEndAndCallbacksChangeUnderTheCallers) {
    std::atomic<bool> done{false};
    std::thread caller([&] {
        std::string reason;
        while (!done) {
            session.transmitEvent("A", reason);
            session.mapClientDataName("Area", 1, reason);
            session.isConnected();
        }
    });
    std::thread setter([&] {
        while (!done) {
            session.setBatteryCallback([](bool) {});
            session.setClientDataCallback(nullptr);
            session.setQuitCallback(nullptr);
        }
    });
    for (int time = 0; time < 20; ++time) {
        EXPECT_TRUE(open());
        sim.deliverBattery(1);
        sim.deliverClientData(1, {'a'});
        sim.deliverQuit();
        session.poll();
        EXPECT_FALSE(session.isConnected());
    }
    done = true;
    caller.join();
    setter.join();
    EXPECT_FALSE(sim.isOpen());
}
