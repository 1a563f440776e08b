#include "sim/simconnect_client.h"

#include "tests/support/fake_host.h"
#include "tests/support/fake_simconnect.h"
#include "tests/support/log_capture.h"
#include "tests/unit/sim/session_log_lines.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using Lines = std::vector<std::string>;
using Sleeps = std::vector<std::int64_t>;

const std::string shutdownLine = "[INFO] Simulator closed; requesting application shutdown";
const std::string quitLine = "[INFO] asked to quit";
const std::string waitingForBoard = "[INFO] Waiting for HID device to connect";
const std::string boardDetected = "[INFO] HID device detected";
const std::string waitingForSimulator = "[INFO] Waiting for flight simulator process to start";
const std::string exceptionLine = "[ERROR] SimConnect worker exception: ";
const std::string announcementBroke = exceptionLine + "announcement broke";

std::string disconnectedLine(const std::string& reason) {
    return "[WARN] SimConnect disconnected: " + reason;
}

} // namespace

/// A client between a simulator and a host in memory. The test ends each of its worker's sleeps. The callbacks write to
/// the log.
class SimConnectClientTest : public testing::Test {
protected:
    SimConnectClientTest() {
        host.holdSleeps();
        client.setQuitCallback([] { logInfo("asked to quit"); });
    }
    ~SimConnectClientTest() override { stop(); }

    bool start() {
        return client.start(
            "bridge", [this](bool connected) { announce(connected); }, [this] { return boardReady(); }, error);
    }

    /// Starts with a board and the simulator running, and waits for the first sleep.
    std::int64_t startWithSimulator() {
        setSimulator(true);
        EXPECT_TRUE(start());
        return host.waitForSleep();
    }

    /// The same, up to the first poll; forgets the lines of that.
    void connect() {
        ASSERT_EQ(startWithSimulator(), 15);
        sim.takeCalls();
        log.clear();
    }

    void stop() {
        host.letSleepsPass();
        client.stop();
    }

    void setSimulator(bool running) {
        host.setProcesses(running ? Lines{"explorer.exe", "FlightSimulator.exe"} : Lines{"explorer.exe"});
    }

    /// The next sleep's duration, with this board and this simulator there from now on.
    std::int64_t turn(bool hasBoard, bool simulatorRuns) {
        board = hasBoard;
        setSimulator(simulatorRuns);
        return host.nextSleep();
    }

    void loseSession() { sim.script(SimCall::CallDispatch, {simConnectFail}); }

    /// The durations of this sleep and the next ones.
    Sleeps walk(std::size_t count) {
        Sleeps result{host.waitForSleep()};
        while (result.size() < count) {
            result.push_back(host.nextSleep());
        }
        return result;
    }

    LogCapture log;
    FakeHost host;
    FakeSimConnect sim;
    std::atomic<bool> board{true};
    std::atomic<int> boardQuestions{0};
    std::atomic<int> announcementsToFail{0};
    std::string error;
    SimConnectClient client{sim.library(), host.record()};

private:
    bool boardReady() {
        ++boardQuestions;
        return board;
    }

    void announce(bool connected) {
        logInfo(connected ? "announced up" : "announced down");
        if (announcementsToFail > 0) {
            --announcementsToFail;
            throw std::runtime_error("announcement broke");
        }
    }
};

// Start and stop.

TEST_F(SimConnectClientTest, RunningClientRefusesAndKeepsItsCallbacks) {
    connect();
    EXPECT_FALSE(client.start(
        "other", [](bool) { logInfo("other"); }, nullptr, error));
    EXPECT_EQ(error, "SimConnect client already running");
    EXPECT_EQ(host.threadsStarted(), 1U);
    stop();
    EXPECT_EQ(log.lines(), (Lines{disconnectedLine("shutdown"), announcedDown}));
}

TEST_F(SimConnectClientTest, RefusedThreadIsReported) {
    host.refuseThreadsAfter(0);
    EXPECT_FALSE(start());
    EXPECT_EQ(error, "Failed to start SimConnect worker: " + FakeHost::refusalText());
    client.stop();
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(SimConnectClientTest, EmptyNameMeansTheProgramsOwnAndCallbacksMayBeMissing) {
    setSimulator(true);
    ASSERT_TRUE(client.start("", nullptr, nullptr, error));
    ASSERT_EQ(host.waitForSleep(), 15);
    stop();
    EXPECT_EQ(sim.calls().front(), R"(Open("VantrelBridgeHID", null, 0, null, 0))");
    EXPECT_EQ(log.lines(), (Lines{connectedLine, disconnectedLine("shutdown")}));
}

TEST_F(SimConnectClientTest, StopWithoutStartOrSessionIsSilent) {
    client.stop();
    ASSERT_TRUE(start());
    ASSERT_EQ(host.waitForSleep(), 5000);
    stop();
    EXPECT_EQ(sim.calls(), Lines());
    EXPECT_EQ(log.lines(), (Lines{waitingForSimulator}));
}

TEST_F(SimConnectClientTest, StopEndsTheSessionOnceOnTheCallersThread) {
    connect();
    std::thread::id closer;
    sim.setHook([&](SimCall) { closer = std::this_thread::get_id(); });
    stop();
    client.stop();
    EXPECT_EQ(closer, std::this_thread::get_id());
    EXPECT_EQ(sim.calls(), (Lines{"Close(h1)"}));
    EXPECT_EQ(log.lines(), (Lines{disconnectedLine("shutdown"), announcedDown}));
    EXPECT_FALSE(client.isConnected());
    sim.setHook(nullptr);
    EXPECT_TRUE(start());
    EXPECT_TRUE(waitUntil([&] { return client.isConnected(); }));
}

TEST_F(SimConnectClientTest, OperationsAndSettingsReachTheSession) {
    client.setBatteryIndex(3);
    client.setBatteryCallback([](bool on) { logInfo(on ? "battery on" : "battery off"); });
    client.setClientDataCallback([](std::uint32_t, const std::uint8_t*, std::uint32_t) { logInfo("data"); });
    ASSERT_EQ(startWithSimulator(), 15);
    EXPECT_EQ(sim.takeCalls().at(1),
              R"(AddToDataDefinition(h1, 1, "ELECTRICAL MASTER BATTERY:3", "Bool", 1, 0, 0xFFFFFFFF))");
    // Neither the event's data nor the definition's offset goes further.
    EXPECT_TRUE(client.transmitEvent("A", 42, error));
    EXPECT_TRUE(client.mapClientDataName("Area", 0x1000, error));
    EXPECT_TRUE(client.addClientDataDefinition(0x1100, 128, 256, error));
    EXPECT_TRUE(client.requestClientData(0x1001, 0x1200, 0x1101, error));
    EXPECT_EQ(sim.calls(), (Lines{R"(MapClientEventToSimEvent(h1, 1, "A"))", "TransmitClientEvent(h1, 0, 1, 0, 1, 16)",
                                  R"(MapClientDataNameToID(h1, "Area", 0x1000))",
                                  "AddToClientDataDefinition(h1, 0x1100, 0, 256, 0, 0xFFFFFFFF)",
                                  "RequestClientData(h1, 0x1001, 0x1200, 0x1101, 3, 1, 0, 0, 0)"}));
    EXPECT_NE(client.connectedHandle(), nullptr);
    sim.deliverBattery(1);
    sim.deliverClientData(1, {'a'});
    host.nextSleep();
    EXPECT_EQ(log.lines(), (Lines{announcedUp, connectedLine, "[INFO] battery on", "[INFO] data"}));
}

// The wait for a board and the simulator.

TEST_F(SimConnectClientTest, WaitsForABoardFirst) {
    board = false;
    setSimulator(true);
    ASSERT_TRUE(start());
    EXPECT_EQ(walk(2), (Sleeps{1000, 1000}));
    EXPECT_EQ(sim.count(SimCall::Open), 0U);
    EXPECT_EQ(turn(true, true), 15);
    EXPECT_EQ(log.lines(), (Lines{waitingForBoard, boardDetected, announcedUp, connectedLine}));
}

TEST_F(SimConnectClientTest, WaitsForTheSimulatorNext) {
    ASSERT_TRUE(start());
    EXPECT_EQ(walk(2), (Sleeps{5000, 5000}));
    EXPECT_EQ(sim.count(SimCall::Open), 0U);
    EXPECT_EQ(turn(true, true), 15);
    EXPECT_EQ(log.lines(),
              (Lines{waitingForSimulator, "[INFO] Flight simulator process detected", announcedUp, connectedLine}));
}

TEST_F(SimConnectClientTest, WaitForABoardForgetsThatForTheSimulator) {
    ASSERT_TRUE(start());
    EXPECT_EQ(host.waitForSleep(), 5000);
    EXPECT_EQ(turn(false, false), 1000);
    EXPECT_EQ(turn(true, false), 5000);
    EXPECT_EQ(turn(false, false), 1000);
    EXPECT_EQ(turn(true, true), 15);
    // The wait for the simulator is logged again, and its end isn't.
    EXPECT_EQ(log.lines(), (Lines{waitingForSimulator, waitingForBoard, boardDetected, waitingForSimulator,
                                  waitingForBoard, boardDetected, announcedUp, connectedLine}));
}

TEST_F(SimConnectClientTest, BothGenerationsAreKnownInAnyCase) {
    host.letSleepsPass();
    for (const char* name :
         {"FlightSimulator.exe", "FLIGHTSIMULATOR.EXE", "FlightSimulator2024.exe", "flightsimulator2024.EXE"}) {
        host.setProcesses({"a.exe", name, "b.exe"});
        SimConnectClient other(sim.library(), host.record());
        ASSERT_TRUE(other.start("x", nullptr, nullptr, error));
        EXPECT_TRUE(waitUntil([&] { return other.isConnected(); })) << name;
    }
    EXPECT_FALSE(sim.isOpen()) << "a client that is destroyed ends its session";
}

TEST_F(SimConnectClientTest, NamesThatOnlyResembleTheSimulatorsAreNot) {
    host.setProcesses({"", "FlightSimulator", "FlightSimulator.exe ", "XFlightSimulator.exe", "FlightSimulator.exe.bak",
                       "FlightSimulator2020.exe", "FlightSimulator2024"});
    ASSERT_TRUE(start());
    EXPECT_EQ(host.waitForSleep(), 5000);
}

TEST_F(SimConnectClientTest, OpenSessionIsPolledWithoutAskingForBoardOrProcess) {
    connect();
    const auto scans = host.processScans();
    const int questions = boardQuestions;
    board = false;
    setSimulator(false);
    host.endSleep();
    EXPECT_EQ(walk(5), Sleeps(5, 15));
    EXPECT_EQ(sim.count(SimCall::CallDispatch), 6U);
    EXPECT_EQ(host.processScans(), scans);
    EXPECT_EQ(boardQuestions, questions);
    EXPECT_TRUE(client.isConnected());
}

// Refused opens.

TEST_F(SimConnectClientTest, RefusedOpensBackOffUpToThirtySeconds) {
    sim.script(SimCall::Open, {-1, -1, -1, -1, -1, 0, -1, -1});
    startWithSimulator();
    EXPECT_EQ(walk(2), (Sleeps{5000, 10000}));
    // The backoff goes on after the simulator was away …
    EXPECT_EQ(turn(true, false), 5000);
    EXPECT_EQ(turn(true, true), 20000);
    host.endSleep();
    EXPECT_EQ(walk(3), (Sleeps{30000, 30000, 15}));
    EXPECT_EQ(log.linesWith("WARN"),
              Lines(5, "[WARN] Waiting for SimConnect connection: SimConnect_Open failed (0xFFFFFFFF)"));
    // … and starts anew after a session.
    loseSession();
    host.endSleep();
    EXPECT_EQ(walk(4), (Sleeps{15, 5000, 10000, 15}));
}

// The end of a session and of the simulator.

TEST_F(SimConnectClientTest, EndOfTheSimulatorAfterASessionRequestsOneShutdownEvenWithoutABoard) {
    connect();
    loseSession();
    EXPECT_EQ(turn(false, false), 15);
    host.endSleep();
    EXPECT_EQ(walk(2), (Sleeps{1000, 1000}));
    EXPECT_EQ(log.lines(), (Lines{disconnectedLine("dispatch error 0x80004005"), announcedDown, shutdownLine, quitLine,
                                  waitingForBoard}));
}

TEST_F(SimConnectClientTest, LoopGoesOnAfterAQuitUntilItIsStopped) {
    connect();
    sim.deliverQuit();
    host.endSleep();
    EXPECT_EQ(walk(2), (Sleeps{15, 15}));
    EXPECT_EQ(log.lines(), (Lines{disconnectedLine("SimConnect quit"), announcedDown, shutdownLine, quitLine,
                                  announcedUp, connectedLine}));
}

TEST_F(SimConnectClientTest, QuitDuringStopEndsTheSessionOnce) {
    connect();
    sim.deliverQuit();
    std::atomic<bool> inDispatch{false};
    std::atomic<bool> stopping{false};
    sim.setHook([&](SimCall call) {
        inDispatch = inDispatch || call == SimCall::CallDispatch;
        waitUntil([&] { return stopping.load(); });
    });
    host.letSleepsPass();
    ASSERT_TRUE(waitUntil([&] { return inDispatch.load(); }));
    stopping = true;
    client.stop();
    EXPECT_EQ(log.linesWith("disconnected"), (Lines{disconnectedLine("SimConnect quit")}));
}

// Exceptions: the session ends, the worker goes on.

TEST_F(SimConnectClientTest, ExceptionWithoutASessionBacksOffAndResumes) {
    Host failing = host.record();
    std::atomic<bool> fail{true};
    failing.findProcess = [&](const auto&) { return fail ? throw std::runtime_error("no processes") : false; };
    SimConnectClient other(sim.library(), failing);
    ASSERT_TRUE(other.start("bridge", nullptr, nullptr, error));
    EXPECT_EQ(walk(5), (Sleeps{5000, 10000, 20000, 30000, 30000}));
    fail = false;
    EXPECT_EQ(host.nextSleep(), 5000);
    Lines expected(5, exceptionLine + "no processes");
    expected.push_back(waitingForSimulator);
    EXPECT_EQ(log.lines(), expected);
    host.letSleepsPass();
}

TEST_F(SimConnectClientTest, ExceptionWhileOpeningClosesTheHalfOpenSessionUnannounced) {
    std::atomic<bool> once{false};
    sim.setHook([&](SimCall call) {
        if (call == SimCall::AddToDataDefinition && !once.exchange(true)) {
            throw std::runtime_error("library broke");
        }
    });
    startWithSimulator();
    EXPECT_EQ(walk(2), (Sleeps{5000, 15}));
    EXPECT_EQ(sim.count(SimCall::Close), 1U);
    EXPECT_EQ(log.lines(), (Lines{exceptionLine + "library broke", announcedUp, connectedLine}));
}

TEST_F(SimConnectClientTest, CallbacksThatThrowEndTheSessionAndANewOneFollows) {
    client.setBatteryCallback([](bool) { throw std::runtime_error("battery broke"); });
    connect();
    sim.deliverBattery(1);
    announcementsToFail = 1;
    host.endSleep();
    EXPECT_EQ(walk(2), (Sleeps{5000, 15}));
    EXPECT_EQ(log.lines(), (Lines{exceptionLine + "battery broke", disconnectedLine("worker exception"), announcedDown,
                                  announcementBroke, announcedUp, connectedLine}));
    // The loss is announced once, even when the announcement fails.
    log.clear();
    loseSession();
    announcementsToFail = 1;
    host.endSleep();
    EXPECT_EQ(walk(2), (Sleeps{5000, 15}));
    EXPECT_EQ(log.lines(), (Lines{disconnectedLine("dispatch error 0x80004005"), announcedDown, announcementBroke,
                                  announcedUp, connectedLine}));
    EXPECT_EQ(sim.count(SimCall::Close), 2U);
}

TEST_F(SimConnectClientTest, AnnouncementsThatThrowBackOffFurtherEachTime) {
    // Each session fails twice: as it opens, and again as that failure ends it.
    announcementsToFail = 3;
    startWithSimulator();
    EXPECT_EQ(walk(3), (Sleeps{5000, 10000, 15}));
    const std::string ended = disconnectedLine("worker exception");
    EXPECT_EQ(log.lines(), (Lines{announcedUp, announcementBroke, ended, announcedDown, announcementBroke, announcedUp,
                                  announcementBroke, ended, announcedDown, announcedUp, connectedLine}));
}
