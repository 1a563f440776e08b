#include "tests/unit/sim/sim_client_fixture.h"

using SimClientStart = SimClientFixture;

TEST_F(SimClientStart, RunningClientRefusesAndKeepsItsCallbacks) {
    connect();
    bool called = false;
    EXPECT_FALSE(client.start(
        "other", [&](bool) { called = true; }, nullptr, error));
    EXPECT_EQ(error, "SimConnect client already running");
    EXPECT_EQ(host.threadsStarted(), 1U);
    stop();
    EXPECT_FALSE(called);
    EXPECT_EQ(connections(), (std::vector{true, false}));
}

TEST_F(SimClientStart, RefusedThreadIsReportedAndLeavesNothingRunning) {
    host.refuseThreadsAfter(0);
    EXPECT_FALSE(start());
    EXPECT_EQ(error, "Failed to start SimConnect worker: " + FakeHost::refusalText());
    EXPECT_FALSE(SimConnectClientAccess::isRunning(client));
    client.stop();
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(SimClientStart, ClientStartsAfterARefusedThread) {
    host.refuseThreadsAfter(0);
    EXPECT_FALSE(start());
    host.refuseThreadsAfter(1);
    error.clear();
    connect();
    EXPECT_EQ(error, "");
}

TEST_F(SimClientStart, GivenNameIsTheSessionsName) {
    connect();
    EXPECT_EQ(sim.calls().front(), R"(Open("bridge", null, 0, null, 0))");
}

TEST_F(SimClientStart, EmptyNameMeansTheProgramsOwn) {
    host.setProcesses({"FlightSimulator.exe"});
    ASSERT_TRUE(client.start("", nullptr, nullptr, error));
    ASSERT_EQ(host.waitForSleep(), 15);
    EXPECT_EQ(sim.calls().front(), R"(Open("VantrelBridgeHID", null, 0, null, 0))");
}

TEST_F(SimClientStart, SessionOpensWithoutAnyCallbacks) {
    host.setProcesses({"FlightSimulator.exe"});
    ASSERT_TRUE(client.start("bridge", nullptr, nullptr, error));
    ASSERT_EQ(host.waitForSleep(), 15);
    EXPECT_TRUE(client.isConnected());
    stop();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected", "[WARN] SimConnect disconnected: shutdown"}));
}

TEST_F(SimClientStart, StopWithoutStartDoesNothing) {
    client.stop();
    client.stop();
    EXPECT_EQ(log.lines(), Lines());
    EXPECT_EQ(sim.calls(), Lines());
}

TEST_F(SimClientStart, StopOfAClientThatNeverConnectedIsSilent) {
    ASSERT_TRUE(start());
    ASSERT_EQ(host.waitForSleep(), 5000);
    stop();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] Waiting for flight simulator process to start"}));
    EXPECT_EQ(connections(), std::vector<bool>());
}

TEST_F(SimClientStart, StopEndsTheSessionOnTheCallersThread) {
    connect();
    sim.takeCalls();
    stop();
    EXPECT_EQ(sim.calls(), (Lines{"Close(h1)"}));
    EXPECT_EQ(connections(), (std::vector{true, false}));
    EXPECT_EQ(lastConnectionThread, std::this_thread::get_id());
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected", "[WARN] SimConnect disconnected: shutdown"}));
    EXPECT_FALSE(client.isConnected());
}

TEST_F(SimClientStart, SecondStopSaysNothingMore) {
    connect();
    stop();
    const Lines before = log.lines();
    client.stop();
    EXPECT_EQ(log.lines(), before);
    EXPECT_EQ(connections(), (std::vector{true, false}));
}

TEST_F(SimClientStart, StoppedClientStartsAgain) {
    connect();
    stop();
    const std::size_t before = host.sleeps().size();
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return host.sleeps().size() > before; }));
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(connections(), (std::vector{true, false, true}));
}

TEST_F(SimClientStart, DestructorEndsTheSession) {
    host.letSleepsPass();
    host.setProcesses({"FlightSimulator.exe"});
    {
        SimConnectClient shortLived(sim.library(), host.record());
        ASSERT_TRUE(shortLived.start("bridge", nullptr, nullptr, error));
        ASSERT_TRUE(waitUntil([&] { return shortLived.isConnected(); }));
    }
    EXPECT_FALSE(sim.isOpen());
    EXPECT_TRUE(log.has("[WARN] SimConnect disconnected: shutdown"));
}

TEST_F(SimClientStart, StopWaitsForTheWorkersSleep) {
    ASSERT_TRUE(start());
    ASSERT_EQ(host.waitForSleep(), 5000);
    std::atomic<bool> stopped{false};
    std::thread stopper([&] {
        client.stop();
        stopped = true;
    });
    EXPECT_TRUE(waitUntil([&] { return !SimConnectClientAccess::isRunning(client); }));
    EXPECT_FALSE(stopped);
    host.endSleep();
    stopper.join();
    EXPECT_EQ(host.sleeps(), (std::vector<std::int64_t>{5000}));
}
