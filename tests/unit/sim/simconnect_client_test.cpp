#include "sim/simconnect_client.h"

#include "tests/support/fake_host.h"
#include "tests/support/fake_simconnect.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using Lines = std::vector<std::string>;
using Sleeps = std::vector<std::int64_t>;

const std::string announcedUp = "[INFO] announced up";
const std::string announcedDown = "[INFO] announced down";
const std::string connectedLine = "[INFO] SimConnect connected";
const std::string shutdownLine = "[INFO] Simulator closed; requesting application shutdown";
const std::string quitLine = "[INFO] asked to quit";
const std::string waitingForBoard = "[INFO] Waiting for HID device to connect";
const std::string waitingForSimulator = "[INFO] Waiting for flight simulator process to start";
const std::string exceptionLine = "[ERROR] SimConnect worker exception: ";

std::string disconnectedLine(const std::string& reason) {
    return "[WARN] SimConnect disconnected: " + reason;
}

} // namespace

/// A client whose worker goes from sleep to sleep at the test's word, between a simulator and a host in memory. The
/// callbacks write to the log.
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

    /// Starts with a board and the simulator there, and waits for the first sleep.
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

TEST_F(SimConnectClientTest, RefusedThreadIsReportedAndAnotherStartMayFollow) {
    host.refuseThreadsAfter(0);
    EXPECT_FALSE(start());
    EXPECT_EQ(error, "Failed to start SimConnect worker: " + FakeHost::refusalText());
    client.stop();
    EXPECT_EQ(log.lines(), Lines());
    host.refuseThreadsAfter(1);
    connect();
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
    sim.setHook([&](SimCall call) {
        if (call == SimCall::Close) {
            closer = std::this_thread::get_id();
        }
    });
    stop();
    client.stop();
    EXPECT_EQ(closer, std::this_thread::get_id());
    EXPECT_EQ(sim.calls(), (Lines{"Close(h1)"}));
    EXPECT_EQ(log.lines(), (Lines{disconnectedLine("shutdown"), announcedDown}));
    EXPECT_FALSE(client.isConnected());
}

TEST_F(SimConnectClientTest, StopWaitsForTheWorkersSleep) {
    ASSERT_TRUE(start());
    ASSERT_EQ(host.waitForSleep(), 5000);
    std::atomic<bool> sleepEnded{false};
    std::thread waker([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        sleepEnded = true;
        host.letSleepsPass();
    });
    client.stop();
    EXPECT_TRUE(sleepEnded);
    waker.join();
}

TEST_F(SimConnectClientTest, StoppedClientStartsAgain) {
    connect();
    stop();
    ASSERT_TRUE(start());
    EXPECT_TRUE(waitUntil([&] { return client.isConnected(); }));
}

TEST_F(SimConnectClientTest, DestructorEndsTheSession) {
    host.letSleepsPass();
    setSimulator(true);
    {
        SimConnectClient shortLived(sim.library(), host.record());
        ASSERT_TRUE(shortLived.start("bridge", nullptr, nullptr, error));
        ASSERT_TRUE(waitUntil([&] { return shortLived.isConnected(); }));
    }
    EXPECT_FALSE(sim.isOpen());
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

TEST(SimConnectClientWaits, ForTheBoardFirstAndThenForTheSimulator) {
    const std::string boardDetected = "[INFO] HID device detected";
    const std::string simulatorDetected = "[INFO] Flight simulator process detected";
    struct Turn {
        bool board;
        bool simulator;
        std::int64_t sleep;
    };
    const struct {
        std::vector<Turn> turns;
        Lines lines;
    } rows[] = {
        {{{false, true, 1000}, {false, true, 1000}, {false, false, 1000}}, {waitingForBoard}},
        {{{false, true, 1000}, {true, true, 15}}, {waitingForBoard, boardDetected, connectedLine}},
        {{{true, false, 5000}, {true, false, 5000}, {true, true, 15}},
         {waitingForSimulator, simulatorDetected, connectedLine}},
        // A wait for the board in between: the one for the simulator is logged again …
        {{{true, false, 5000}, {false, false, 1000}, {true, false, 5000}},
         {waitingForSimulator, waitingForBoard, boardDetected, waitingForSimulator}},
        // … and its end isn't announced.
        {{{true, false, 5000}, {false, false, 1000}, {true, true, 15}},
         {waitingForSimulator, waitingForBoard, boardDetected, connectedLine}},
    };
    for (const auto& row : rows) {
        LogCapture log;
        FakeHost host;
        FakeSimConnect sim;
        std::atomic<bool> board{false};
        host.holdSleeps();
        SimConnectClient client(sim.library(), host.record());
        std::string error;
        std::int64_t asleep = 0;
        for (const Turn& turn : row.turns) {
            board = turn.board;
            host.setProcesses(turn.simulator ? Lines{"FlightSimulator.exe"} : Lines());
            const bool isFirst = &turn == &row.turns.front();
            if (isFirst) {
                client.start(
                    "bridge", nullptr, [&] { return board.load(); }, error);
            }
            asleep = isFirst ? host.waitForSleep() : host.nextSleep();
            EXPECT_EQ(asleep, turn.sleep) << "row " << &row - rows;
        }
        EXPECT_EQ(log.lines(), row.lines) << "row " << &row - rows;
        EXPECT_EQ(sim.count(SimCall::Open), asleep == 15 ? 1U : 0U);
        host.letSleepsPass();
    }
}

TEST_F(SimConnectClientTest, BothGenerationsAreKnownInAnyCase) {
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
    sim.setResult(SimCall::Open, simConnectFail);
    startWithSimulator();
    EXPECT_EQ(walk(6), (Sleeps{5000, 10000, 20000, 30000, 30000, 30000}));
    EXPECT_EQ(log.lines(), Lines(6, "[WARN] Waiting for SimConnect connection: SimConnect_Open failed (0x80004005)"));
    EXPECT_EQ(sim.calls(), Lines(6, R"(Open("bridge", null, 0, null, 0))"));
}

TEST_F(SimConnectClientTest, SuccessStartsTheBackoffAnew) {
    sim.script(SimCall::Open, {-1, -1, 0, -1, -1});
    startWithSimulator();
    EXPECT_EQ(walk(3), (Sleeps{5000, 10000, 15}));
    loseSession();
    host.endSleep();
    EXPECT_EQ(walk(4), (Sleeps{15, 5000, 10000, 15}));
}

TEST_F(SimConnectClientTest, BackoffGoesOnAfterTheSimulatorWasAway) {
    sim.setResult(SimCall::Open, simConnectFail);
    startWithSimulator();
    EXPECT_EQ(walk(2), (Sleeps{5000, 10000}));
    setSimulator(false);
    EXPECT_EQ(host.nextSleep(), 5000);
    setSimulator(true);
    EXPECT_EQ(host.nextSleep(), 20000);
}

// The end of a session and of the simulator.

TEST_F(SimConnectClientTest, MissingProcessListBeforeASessionIsAnAbsentSimulator) {
    host.setProcessListFails(true);
    startWithSimulator();
    EXPECT_EQ(walk(3), (Sleeps{5000, 5000, 5000}));
    EXPECT_EQ(log.lines(), (Lines{waitingForSimulator}));
}

TEST_F(SimConnectClientTest, MissingProcessListAfterASessionRequestsOneShutdown) {
    connect();
    host.setProcessListFails(true);
    loseSession();
    EXPECT_EQ(host.nextSleep(), 15);
    const Lines lost{disconnectedLine("dispatch error 0x80004005"), announcedDown};
    EXPECT_EQ(log.lines(), lost);
    host.endSleep();
    EXPECT_EQ(walk(4), Sleeps(4, 5000));
    EXPECT_EQ(log.lines(), (Lines{lost[0], lost[1], shutdownLine, quitLine, waitingForSimulator}));
}

TEST_F(SimConnectClientTest, ClosedSimulatorIsNoticedWithoutABoard) {
    connect();
    board = false;
    setSimulator(false);
    loseSession();
    EXPECT_EQ(host.nextSleep(), 15);
    EXPECT_EQ(host.nextSleep(), 1000);
    EXPECT_TRUE(log.has(quitLine));
}

TEST_F(SimConnectClientTest, LostSessionIsFollowedByANewOneWhileTheSimulatorRuns) {
    connect();
    loseSession();
    EXPECT_EQ(host.nextSleep(), 15);
    EXPECT_FALSE(client.isConnected());
    EXPECT_EQ(host.nextSleep(), 15);
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(log.lines(),
              (Lines{disconnectedLine("dispatch error 0x80004005"), announcedDown, announcedUp, connectedLine}));
}

TEST_F(SimConnectClientTest, LoopGoesOnAfterAQuitUntilItIsStopped) {
    connect();
    sim.deliverQuit();
    EXPECT_EQ(host.nextSleep(), 15);
    EXPECT_EQ(host.nextSleep(), 15);
    EXPECT_TRUE(client.isConnected());
    sim.deliverQuit();
    EXPECT_EQ(host.nextSleep(), 15);
    const std::string quit = disconnectedLine("SimConnect quit");
    EXPECT_EQ(log.lines(),
              (Lines{quit, announcedDown, shutdownLine, quitLine, announcedUp, connectedLine, quit, announcedDown}));
}

TEST_F(SimConnectClientTest, QuitDuringStopEndsTheSessionOnce) {
    connect();
    sim.deliverQuit();
    std::atomic<bool> inDispatch{false};
    std::atomic<bool> stopping{false};
    sim.setHook([&](SimCall call) {
        if (call != SimCall::CallDispatch) {
            return;
        }
        inDispatch = true;
        waitUntil([&] { return stopping.load(); });
    });
    host.letSleepsPass();
    ASSERT_TRUE(waitUntil([&] { return inDispatch.load(); }));
    setSimulator(false);
    stopping = true;
    client.stop();
    EXPECT_EQ(log.linesWith("asked to quit").size(), 1U);
    EXPECT_EQ(log.linesWith("disconnected"), (Lines{disconnectedLine("SimConnect quit")}));
}

// Exceptions: the session ends, the worker goes on.

TEST_F(SimConnectClientTest, ExceptionWithoutASessionBacksOffAndResumes) {
    Host failing = host.record();
    std::atomic<bool> fail{true};
    failing.findProcess = [&, working = failing.findProcess](const auto& visit) {
        if (fail) {
            throw std::runtime_error("no processes");
        }
        return working(visit);
    };
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

TEST_F(SimConnectClientTest, CallbacksThatThrowEndTheSessionAndANewOneOpens) {
    const std::string announcementLine = exceptionLine + "announcement broke";
    const std::string batteryLine = exceptionLine + "battery broke";
    const std::string endedLine = disconnectedLine("worker exception");
    const Lines again{announcedUp, connectedLine};
    const struct {
        int announcements;
        bool battery;
        Lines lines;
    } rows[] = {
        {0, true, {batteryLine, endedLine, announcedDown}},
        {1, true, {batteryLine, endedLine, announcedDown, announcementLine}},
        // The loss is announced once, whatever becomes of it.
        {1, false, {disconnectedLine("dispatch error 0x80004005"), announcedDown, announcementLine}},
    };
    client.setBatteryCallback([](bool) { throw std::runtime_error("battery broke"); });
    connect();
    for (const auto& row : rows) {
        log.clear();
        announcementsToFail = row.announcements;
        if (row.battery) {
            sim.deliverBattery(1);
        } else {
            loseSession();
        }
        EXPECT_EQ(host.nextSleep(), 5000);
        EXPECT_FALSE(sim.isOpen());
        EXPECT_EQ(log.lines(), row.lines) << "row " << &row - rows;
        log.clear();
        EXPECT_EQ(host.nextSleep(), 15);
        EXPECT_EQ(log.lines(), again);
    }
}

TEST_F(SimConnectClientTest, AnnouncementsThatThrowBackOffFurtherEachTime) {
    // Each session fails twice: as it opens, and again as that failure ends it.
    announcementsToFail = 5;
    startWithSimulator();
    EXPECT_EQ(walk(4), (Sleeps{5000, 10000, 20000, 15}));
    const std::string broke = exceptionLine + "announcement broke";
    const std::string ended = disconnectedLine("worker exception");
    EXPECT_EQ(log.lines(),
              (Lines{announcedUp, broke, ended, announcedDown, broke, announcedUp, broke, ended, announcedDown, broke,
                     announcedUp, broke, ended, announcedDown, announcedUp, connectedLine}));
}
