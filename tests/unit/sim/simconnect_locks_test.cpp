#include "tests/unit/sim/sim_client_fixture.h"

/// A library call may take long; the others that use the client must not wait for it.
class SimClientLocks : public SimClientFixture {
protected:
    ~SimClientLocks() override {
        stop();
        join();
    }

    /// Has another thread ask for the handle in the midst of the first such call.
    void watch(SimCall watched) {
        sim.setHook([this, watched](SimCall call) {
            if (call != watched || other.joinable())
                return;
            other = std::thread([this] {
                client.connectedHandle();
                answered = true;
            });
            answeredDuringTheCall = waitUntil([this] { return answered.load(); });
        });
    }

    void join() {
        if (other.joinable())
            other.join();
    }

    std::thread other;
    std::atomic<bool> answered{false};
    std::atomic<bool> answeredDuringTheCall{false};
};

TEST_F(SimClientLocks, TransmissionRunsUnlocked) {
    connect();
    watch(SimCall::TransmitClientEvent);
    EXPECT_TRUE(client.transmitEvent("A", 0, error));
    EXPECT_TRUE(answeredDuringTheCall);
}

TEST_F(SimClientLocks, NamingAClientDataAreaRunsUnlocked) {
    connect();
    watch(SimCall::MapClientDataNameToId);
    EXPECT_TRUE(client.mapClientDataName("Area", 1, error));
    EXPECT_TRUE(answeredDuringTheCall);
}

TEST_F(SimClientLocks, DefiningAClientDataAreaRunsUnlocked) {
    connect();
    watch(SimCall::AddToClientDataDefinition);
    EXPECT_TRUE(client.addClientDataDefinition(1, 0, 256, error));
    EXPECT_TRUE(answeredDuringTheCall);
}

TEST_F(SimClientLocks, RequestingClientDataRunsUnlocked) {
    connect();
    watch(SimCall::RequestClientData);
    EXPECT_TRUE(client.requestClientData(1, 2, 3, error));
    EXPECT_TRUE(answeredDuringTheCall);
}

TEST_F(SimClientLocks, OpeningRunsUnlocked) {
    watch(SimCall::Open);
    connect();
    EXPECT_TRUE(answeredDuringTheCall);
}

TEST_F(SimClientLocks, DefiningTheBatteryRunsUnlocked) {
    watch(SimCall::AddToDataDefinition);
    connect();
    EXPECT_TRUE(answeredDuringTheCall);
}

TEST_F(SimClientLocks, RequestingTheBatteryRunsUnlocked) {
    watch(SimCall::RequestDataOnSimObject);
    connect();
    EXPECT_TRUE(answeredDuringTheCall);
}

TEST_F(SimClientLocks, DispatchRunsUnlocked) {
    connect();
    watch(SimCall::CallDispatch);
    poll();
    EXPECT_TRUE(answeredDuringTheCall);
}

TEST_F(SimClientLocks, ClosingALostSessionRunsUnlocked) {
    connect();
    watch(SimCall::Close);
    sim.script(SimCall::CallDispatch, {simConnectFail});
    poll();
    EXPECT_TRUE(answeredDuringTheCall);
}
