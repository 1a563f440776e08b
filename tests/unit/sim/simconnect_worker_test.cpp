#include "tests/unit/sim/sim_client_fixture.h"

#include <stdexcept>

namespace {

class SimClientWorker : public SimClientFixture {
protected:
    SimClientWorker() {
        client.setQuitCallback([this] { ++quits; });
    }
    ~SimClientWorker() override { stop(); }

    /// The durations of the first sleeps, the worker going on from each to the next.
    std::vector<std::int64_t> walk(std::size_t count) {
        std::vector<std::int64_t> result{host.waitForSleep()};
        while (result.size() < count)
            result.push_back(host.nextSleep());
        return result;
    }

    std::atomic<int> quits{0};
};

using Sleeps = std::vector<std::int64_t>;

} // namespace

TEST_F(SimClientWorker, WithoutABoardOpensNothingAndSaysSoOnce) {
    board = false;
    host.setProcesses({"FlightSimulator.exe"});
    ASSERT_TRUE(start());
    EXPECT_EQ(walk(3), (Sleeps{1000, 1000, 1000}));
    EXPECT_EQ(log.lines(), (Lines{"[INFO] Waiting for HID device to connect"}));
    EXPECT_EQ(sim.calls(), Lines());
}

TEST_F(SimClientWorker, SessionOpensWhenTheBoardComesAfterTheSimulator) {
    board = false;
    host.setProcesses({"FlightSimulator.exe"});
    ASSERT_TRUE(start());
    ASSERT_EQ(host.waitForSleep(), 1000);
    board = true;
    ASSERT_EQ(host.nextSleep(), 15);
    EXPECT_EQ(log.lines(), (Lines{"[INFO] Waiting for HID device to connect", "[INFO] HID device detected",
                                  "[INFO] SimConnect connected"}));
}

TEST_F(SimClientWorker, SessionOpensWhenTheSimulatorComesAfterTheBoard) {
    ASSERT_TRUE(start());
    EXPECT_EQ(walk(2), (Sleeps{5000, 5000}));
    host.setProcesses({"explorer.exe", "FlightSimulator.exe"});
    ASSERT_EQ(host.nextSleep(), 15);
    EXPECT_EQ(log.lines(), (Lines{"[INFO] Waiting for flight simulator process to start",
                                  "[INFO] Flight simulator process detected", "[INFO] SimConnect connected"}));
}

TEST_F(SimClientWorker, WaitForTheSimulatorIsSaidAgainAfterAWaitForTheBoard) {
    ASSERT_TRUE(start());
    ASSERT_EQ(host.waitForSleep(), 5000);
    board = false;
    ASSERT_EQ(host.nextSleep(), 1000);
    board = true;
    ASSERT_EQ(host.nextSleep(), 5000);
    const std::string waiting = "[INFO] Waiting for flight simulator process to start";
    EXPECT_EQ(log.lines(),
              (Lines{waiting, "[INFO] Waiting for HID device to connect", "[INFO] HID device detected", waiting}));
}

TEST_F(SimClientWorker, DetectedSimulatorIsNotAnnouncedAfterAWaitForTheBoard) {
    ASSERT_TRUE(start());
    ASSERT_EQ(host.waitForSleep(), 5000);
    board = false;
    ASSERT_EQ(host.nextSleep(), 1000);
    board = true;
    host.setProcesses({"FlightSimulator.exe"});
    ASSERT_EQ(host.nextSleep(), 15);
    EXPECT_FALSE(log.has("[INFO] Flight simulator process detected"));
}

TEST_F(SimClientWorker, FailedOpensBackOffUpToThirtySeconds) {
    host.setProcesses({"FlightSimulator.exe"});
    sim.setResult(SimCall::Open, simConnectFail);
    ASSERT_TRUE(start());
    EXPECT_EQ(walk(6), (Sleeps{5000, 10000, 20000, 30000, 30000, 30000}));
    EXPECT_EQ(log.lines(), Lines(6, "[WARN] Waiting for SimConnect connection: SimConnect_Open failed (0x80004005)"));
    EXPECT_EQ(sim.calls(), Lines(6, R"(Open("bridge", null, 0, null, 0))"));
}

TEST_F(SimClientWorker, SuccessStartsTheBackoffAnew) {
    host.setProcesses({"FlightSimulator.exe"});
    sim.script(SimCall::Open, {-1, -1, 0, -1, -1});
    ASSERT_TRUE(start());
    EXPECT_EQ(walk(3), (Sleeps{5000, 10000, 15}));
    sim.script(SimCall::CallDispatch, {-1});
    EXPECT_EQ(host.nextSleep(), 15);
    EXPECT_EQ(host.nextSleep(), 5000);
    EXPECT_EQ(host.nextSleep(), 10000);
    EXPECT_EQ(host.nextSleep(), 15);
}

TEST_F(SimClientWorker, BackoffGoesOnAfterTheSimulatorWasAway) {
    host.setProcesses({"FlightSimulator.exe"});
    sim.setResult(SimCall::Open, simConnectFail);
    ASSERT_TRUE(start());
    EXPECT_EQ(walk(2), (Sleeps{5000, 10000}));
    host.setProcesses({});
    EXPECT_EQ(host.nextSleep(), 5000);
    host.setProcesses({"FlightSimulator.exe"});
    EXPECT_EQ(host.nextSleep(), 20000);
}

TEST_F(SimClientWorker, BothGenerationsAreKnownInAnyCase) {
    for (const char* name :
         {"FlightSimulator.exe", "FLIGHTSIMULATOR.EXE", "FlightSimulator2024.exe", "flightsimulator2024.EXE"}) {
        FakeHost otherHost;
        FakeSimConnect otherSim;
        otherHost.setProcesses({"a.exe", name, "b.exe"});
        SimConnectClient other(otherSim.library(), otherHost.record());
        ASSERT_TRUE(other.start("x", nullptr, nullptr, error));
        EXPECT_TRUE(waitUntil([&] { return other.isConnected(); })) << name;
    }
}

TEST_F(SimClientWorker, NamesThatOnlyResembleTheSimulatorsAreNot) {
    host.setProcesses({"", "FlightSimulator", "FlightSimulator.exe ", "XFlightSimulator.exe", "FlightSimulator.exe.bak",
                       "FlightSimulator2020.exe", "FlightSimulator2024"});
    ASSERT_TRUE(start());
    EXPECT_EQ(host.waitForSleep(), 5000);
    EXPECT_EQ(sim.calls(), Lines());
}

TEST_F(SimClientWorker, MissingProcessListBeforeASessionIsAnAbsentSimulator) {
    host.setProcesses({"FlightSimulator.exe"});
    host.setProcessListFails(true);
    ASSERT_TRUE(start());
    EXPECT_EQ(walk(3), (Sleeps{5000, 5000, 5000}));
    EXPECT_EQ(quits, 0);
    EXPECT_EQ(log.lines(), (Lines{"[INFO] Waiting for flight simulator process to start"}));
}

TEST_F(SimClientWorker, MissingProcessListAfterASessionRequestsTheShutdown) {
    connect();
    host.setProcessListFails(true);
    sim.script(SimCall::CallDispatch, {simConnectRemoteDisconnect});
    poll();
    EXPECT_EQ(quits, 0);
    EXPECT_EQ(host.nextSleep(), 5000);
    EXPECT_EQ(quits, 1);
    EXPECT_EQ(log.lines(),
              (Lines{"[INFO] SimConnect connected", "[WARN] SimConnect disconnected: dispatch error 0xC000013C",
                     "[INFO] Simulator closed; requesting application shutdown",
                     "[INFO] Waiting for flight simulator process to start"}));
}

TEST_F(SimClientWorker, ShutdownIsRequestedOnceHoweverLongTheLoopGoesOn) {
    connect();
    host.setProcesses({});
    sim.script(SimCall::CallDispatch, {simConnectFail});
    poll();
    for (int turn = 0; turn < 4; ++turn)
        EXPECT_EQ(host.nextSleep(), 5000);
    EXPECT_EQ(quits, 1);
    EXPECT_EQ(log.linesWith("requesting application shutdown").size(), 1U);
}

TEST_F(SimClientWorker, ClosedSimulatorIsNoticedWithoutABoard) {
    connect();
    board = false;
    host.setProcesses({});
    sim.script(SimCall::CallDispatch, {simConnectFail});
    poll();
    EXPECT_EQ(host.nextSleep(), 1000);
    EXPECT_EQ(quits, 1);
}

TEST_F(SimClientWorker, ShutdownWithoutACallbackIsSilentAndSpent) {
    client.setQuitCallback(nullptr);
    connect();
    sim.deliverQuit();
    poll();
    client.setQuitCallback([this] { ++quits; });
    host.setProcesses({});
    EXPECT_EQ(host.nextSleep(), 5000);
    EXPECT_EQ(quits, 0);
    EXPECT_EQ(log.linesWith("requesting application shutdown"), Lines());
}

TEST_F(SimClientWorker, QuitMessageEndsTheSessionAndRequestsTheShutdown) {
    connect();
    sim.takeCalls();
    sim.deliverQuit();
    poll();
    EXPECT_EQ(sim.calls(), (Lines{"CallDispatch: message 3 of 12", "Close(h1)"}));
    EXPECT_EQ(connections(), (std::vector{true, false}));
    EXPECT_EQ(quits, 1);
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected", "[WARN] SimConnect disconnected: SimConnect quit",
                                  "[INFO] Simulator closed; requesting application shutdown"}));
}

TEST_F(SimClientWorker, LoopGoesOnAfterAQuitUntilItIsStopped) {
    connect();
    sim.deliverQuit();
    poll();
    poll();
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(connections(), (std::vector{true, false, true}));
    sim.deliverQuit();
    poll();
    EXPECT_EQ(quits, 1);
}

TEST_F(SimClientWorker, DispatchErrorBehindAQuitSaysNothingMore) {
    connect();
    sim.deliverQuit();
    sim.script(SimCall::CallDispatch, {simConnectRemoteDisconnect});
    poll();
    EXPECT_EQ(log.linesWith("disconnected"), (Lines{"[WARN] SimConnect disconnected: SimConnect quit"}));
    EXPECT_EQ(connections(), (std::vector{true, false}));
}

TEST_F(SimClientWorker, QuitDuringStopRequestsOneShutdown) {
    connect();
    sim.deliverQuit();
    std::atomic<bool> inDispatch{false};
    sim.setHook([&](SimCall call) {
        if (call != SimCall::CallDispatch)
            return;
        inDispatch = true;
        EXPECT_TRUE(waitUntil([&] { return !SimConnectClientAccess::isRunning(client); }));
    });
    host.letSleepsPass();
    ASSERT_TRUE(waitUntil([&] { return inDispatch.load(); }));
    client.stop();
    EXPECT_EQ(quits, 1);
    EXPECT_EQ(connections(), (std::vector{true, false}));
    EXPECT_EQ(log.linesWith("disconnected"), (Lines{"[WARN] SimConnect disconnected: SimConnect quit"}));
}

TEST_F(SimClientWorker, FailedDispatchOpensANewSessionWhileTheSimulatorRuns) {
    connect();
    sim.takeCalls();
    sim.script(SimCall::CallDispatch, {simConnectFail});
    poll();
    EXPECT_EQ(sim.takeCalls(), (Lines{"CallDispatch(h1) failed", "Close(h1)"}));
    poll();
    EXPECT_EQ(sim.calls(),
              (Lines{R"(Open("bridge", null, 0, null, 0))",
                     R"(AddToDataDefinition(h2, 1, "ELECTRICAL MASTER BATTERY:2", "Bool", 1, 0, 0xFFFFFFFF))",
                     "RequestDataOnSimObject(h2, 1, 1, 0, 3, 1, 0, 0, 0)"}));
    EXPECT_EQ(connections(), (std::vector{true, false, true}));
    EXPECT_EQ(quits, 0);
}

TEST_F(SimClientWorker, OpenSessionIsPolledWithoutAskingForBoardOrProcess) {
    connect();
    const auto scans = host.processScans();
    const int questions = boardQuestions;
    board = false;
    host.setProcesses({});
    for (int turn = 0; turn < 5; ++turn)
        poll();
    EXPECT_EQ(sim.count(SimCall::CallDispatch), 6U);
    EXPECT_EQ(host.processScans(), scans);
    EXPECT_EQ(boardQuestions, questions);
    EXPECT_TRUE(client.isConnected());
}

TEST_F(SimClientWorker, ExceptionWithoutASessionBacksOffAndResumes) {
    Host failing = host.record();
    std::atomic<bool> fail{true};
    failing.findProcess = [&, working = failing.findProcess](const auto& visit) {
        if (fail)
            throw std::runtime_error("no processes");
        return working(visit);
    };
    SimConnectClient other(sim.library(), failing);
    ASSERT_TRUE(other.start("bridge", nullptr, nullptr, error));
    EXPECT_EQ(walk(5), (Sleeps{5000, 10000, 20000, 30000, 30000}));
    fail = false;
    EXPECT_EQ(host.nextSleep(), 5000);
    EXPECT_EQ(log.linesWith("exception"), Lines(5, "[ERROR] SimConnect worker exception: no processes"));
    EXPECT_EQ(log.linesWith("disconnected"), Lines());
    host.letSleepsPass();
}

TEST_F(SimClientWorker, ExceptionInASessionEndsItAndANewOneOpens) {
    connect();
    client.setBatteryCallback([](bool) { throw std::runtime_error("callback broke"); });
    sim.deliverBattery(1);
    EXPECT_EQ(host.nextSleep(), 5000);
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected", "[ERROR] SimConnect worker exception: callback broke",
                                  "[WARN] SimConnect disconnected: worker exception"}));
    EXPECT_EQ(connections(), (std::vector{true, false}));
    poll();
    EXPECT_EQ(connections(), (std::vector{true, false, true}));
}

TEST_F(SimClientWorker, ExceptionWhileOpeningClosesTheHalfOpenSessionUnannounced) {
    std::atomic<bool> once{false};
    sim.setHook([&](SimCall call) {
        if (call == SimCall::AddToDataDefinition && !once.exchange(true))
            throw std::runtime_error("library broke");
    });
    host.setProcesses({"FlightSimulator.exe"});
    ASSERT_TRUE(start());
    EXPECT_EQ(walk(2), (Sleeps{5000, 15}));
    EXPECT_EQ(sim.count(SimCall::Close), 1U);
    EXPECT_EQ(connections(), (std::vector{true}));
    EXPECT_EQ(log.lines(),
              (Lines{"[ERROR] SimConnect worker exception: library broke", "[INFO] SimConnect connected"}));
}
