#include "tests/unit/app/app_fixture.h"

namespace {

using Lines = std::vector<std::string>;
using Outputs = std::vector<BoardOutput>;

constexpr std::uint32_t responseRequest = 0x1200;
constexpr std::uint32_t lvarsRequest = 0x1201;

const LedCommand fullLight{1, 80, 0, 0, 0};
const std::string disconnected = "[INFO] HID device disconnected: 0000000000000001";

class AppRun : public AppTest {
protected:
    /// Waits for the console thread, which nobody joins and which uses the application and the standard input.
    bool allThreadsEnd() {
        return waitUntil([this] { return host.threadsEnded() == host.threadsStarted(); });
    }

    bool waitForLog(const std::string& line) {
        return waitUntil([&] { return logHas(line); });
    }
    bool waitForLight(const LedCommand& light) {
        return waitUntil([&] { return board->led() == light; });
    }
    bool waitForCommands(const Lines& expected) {
        return waitUntil([&] { return sim.commands() == expected; });
    }

    void confirmRegistration() { sim.deliverText(responseRequest, "MF.Clients.Add.VantrelBridgeHID.Finished", 256); }

    static BoardOutput sessionEnd() {
        const HidProtocol::Report report = HidProtocol::encodeSimStatus(false);
        return {OutputCall::Write, {report.begin(), report.end()}};
    }
};

TEST_F(AppRun, BoardGivesCommandsAndShowsTheSimulatorsState) {
    host.setProcesses({"FlightSimulator.exe"});
    configPath = writeConfig(R"(,"logging":{"debug":1},"outputs":{"debounceMs":1})");
    App app(platform());
    start(app);
    // The session waits for a board.
    EXPECT_TRUE(waitForLog("[INFO] Waiting for HID device to connect"));
    bus.plug(board);
    EXPECT_TRUE(waitForCommands({"MF.Clients.Add.VantrelBridgeHID"}));
    EXPECT_TRUE(waitForLight(fullLight));
    confirmRegistration();
    const std::string variable = "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)";
    EXPECT_TRUE(waitForCommands({"MF.Clients.Add.VantrelBridgeHID", "MF.SimVars.Clear", variable}));
    board->press(21);
    EXPECT_TRUE(waitForCommands({"MF.Clients.Add.VantrelBridgeHID", "MF.SimVars.Clear", variable,
                                 "MF.SimVars.Set.1 1 (>K:PRESSED)", "MF.DummyCmd"}));
    sim.deliverBattery(0);
    EXPECT_TRUE(waitForLight({2, 0, 5, 1000, 50}));
    EXPECT_TRUE(logHas("[DEBUG] State update: master battery 2=0"));
    sim.deliverBattery(-1);
    sim.deliverText(lvarsRequest, "0.25", 4096);
    EXPECT_TRUE(waitForLight({1, 25, 0, 0, 0}));
    EXPECT_TRUE(logHas("[DEBUG] State update: master battery 2=1"));
    runAndStop(app);
}

TEST_F(AppRun, ExtensionsReachTheSubsystems) {
    makeSessionPossible();
    configPath = writeConfig(R"json(,"logging":{"debug":1},"extensions":{"renewRegistration":1,"ownChannels":1,
        "lvarNumbers":1,"batteryIndex":1,"lightVariable":"(A:LIGHT POTENTIOMETER:3, percent over 100)"})json");
    App app(platform());
    start(app);
    EXPECT_TRUE(waitForCommands({"MF.Ping", "MF.Clients.Add.VantrelBridgeHID", "MF.DummyCmd"}));
    confirmRegistration();
    EXPECT_TRUE(waitForCommands({"MF.Ping", "MF.Clients.Add.VantrelBridgeHID", "MF.DummyCmd", "MF.SimVars.Clear",
                                 "MF.SimVars.Add.(A:LIGHT POTENTIOMETER:3, percent over 100)"}));
    sim.deliverBattery(1);
    sim.deliverClientData(lvarsRequest, {'3', '3', '3', '?'});
    EXPECT_TRUE(waitForLog("[DEBUG] State update: backlight (A:LIGHT POTENTIOMETER:3, percent over 100)=0.700000"));
    EXPECT_TRUE(logHas("[DEBUG] State update: master battery 1=1"));
    runAndStop(app);
    const Lines calls = sim.calls();
    for (const char* part : {"ELECTRICAL MASTER BATTERY:1\"", "\"VantrelBridgeHID.Command\""}) {
        EXPECT_TRUE(std::any_of(calls.begin(), calls.end(), [&](const auto& call) {
            return call.find(part) != std::string::npos;
        })) << part;
    }
}

TEST_F(AppRun, ASecondStopAddsNothing) {
    makeSessionPossible();
    App app(platform());
    start(app);
    EXPECT_TRUE(waitForLog("[INFO] SimConnect connected"));
    host.setProcesses({});
    sim.deliverQuit();
    EXPECT_TRUE(waitUntil([this] { return sim.count(SimCall::Close) == 1; }));
    runAndStop(app);
    for (const std::string& line : {std::string("[INFO] Simulator closed; requesting application shutdown"),
                                    std::string("[WARN] SimConnect disconnected: SimConnect quit"), disconnected,
                                    std::string("[INFO] Application run loop stopped")}) {
        EXPECT_EQ(logCount(line), 1) << line;
    }
    EXPECT_EQ(sim.count(SimCall::Close), 1U);
    const Outputs outputs = board->outputs();
    EXPECT_EQ(std::count(outputs.begin(), outputs.end(), sessionEnd()), 1);
}

/// What is typed, and how often it makes the application send BOOTSEL. Each ends with a command that stops the run.
struct ConsoleCase {
    const char* input;
    int sent;
};

class AppRunConsole : public AppRun, public testing::WithParamInterface<ConsoleCase> {};

TEST_P(AppRunConsole, ActsOnWholeLinesInAnyCase) {
    const ConsoleInput input(GetParam().input);
    bus.plug(board);
    testing::internal::CaptureStdout();
    App app(platform());
    start(app, true);
    app.run();
    EXPECT_TRUE(allThreadsEnd());
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(logCount("[INFO] Console commands: bootsel, quit", true), 1);
    EXPECT_EQ(logCount("[INFO] Stop requested from console", true), 1);
    EXPECT_EQ(logCount("[INFO] Sending BOOTSEL command to devices", true), GetParam().sent);
    EXPECT_EQ(logCount("[INFO] BOOTSEL command sent to 0000000000000001 via WriteFile", true), GetParam().sent > 0);
    EXPECT_EQ(board->inBootsel(), GetParam().sent > 0);
}

// Of the last input only "boot" is a command; every other line has a blank or is no command at all.
INSTANTIATE_TEST_SUITE_P(Inputs, AppRunConsole,
                         testing::Values(ConsoleCase{"QuIt\nbootsel\n", 0}, ConsoleCase{"BootSel\nboot\nEXIT\n", 2},
                                         ConsoleCase{"\n quit\nquit \n\tquit\nquit\r\n exit\nexit \n bootsel\nbootsel "
                                                     "\nboot sel\n boot\nboot \nhelp\nboot\nquit\n",
                                                     1}));

TEST_F(AppRun, WithoutConsoleStandardInputIsNotRead) {
    const ConsoleInput input("quit\n");
    App app(platform());
    start(app);
    const std::size_t threads = host.threadsStarted();
    runAndStop(app);
    EXPECT_EQ(host.threadsStarted(), threads);
    std::string unread;
    std::getline(std::cin, unread);
    EXPECT_EQ(unread, "quit");
}

TEST_F(AppRun, AStopBeforeTheRunLeavesAWaitingBootselUnsent) {
    const ConsoleInput input("bootsel\n");
    bus.plug(board);
    testing::internal::CaptureStdout();
    App app(platform());
    start(app, true);
    runAndStop(app);
    EXPECT_TRUE(allThreadsEnd());
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(logHas("[INFO] Console commands: bootsel, quit", true));
    EXPECT_FALSE(board->inBootsel());
}

TEST_F(AppRun, EachNotificationIsOneScanOnTheNotificationThread) {
    // The scan thread sleeps after its first scan, so that every later scan has another cause.
    host.holdSleeps();
    std::mutex mutex;
    std::vector<std::thread::id> scans;
    Platform records = platform();
    records.hid.enumerate = [&, enumerate = records.hid.enumerate] {
        const std::lock_guard lock(mutex);
        scans.push_back(std::this_thread::get_id());
        return enumerate();
    };
    const auto scanners = [&] {
        const std::lock_guard lock(mutex);
        return scans;
    };
    App app(records);
    start(app);
    ASSERT_TRUE(waitUntil([&] { return scanners().size() == 2; }));
    bus.plug(board);
    notifications.announceChange();
    EXPECT_TRUE(notifications.waitForChanges(1));
    EXPECT_TRUE(logHas("[INFO] HID device connected: 0000000000000001 index=0"));
    bus.unplug(board);
    notifications.announceChange();
    EXPECT_TRUE(notifications.waitForChanges(2));
    EXPECT_TRUE(logHas(disconnected));
    const std::vector<std::thread::id> all = scanners();
    EXPECT_EQ(std::vector(all.begin() + 2, all.end()), std::vector(2, notifications.thread()));
    host.letSleepsPass();
    runAndStop(app);
    EXPECT_EQ(notifications.calls(), (Lines{"setUp", "run", "change", "change", "tearDown"}));
}

TEST_F(AppRun, StopsTheSubsystemsOneAfterTheOther) {
    // The threads in the order in which the subsystems start them; without a board there are no others.
    const Lines names{"engine", "engine", "engine", "boards", "MobiFlight", "SimConnect", "notifications"};
    std::mutex mutex;
    std::size_t started = 0;
    Lines ended;
    Platform records = platform();
    records.host.startThread = [&](std::function<void()> body) {
        return std::thread([&, name = names.at(started++), body = std::move(body)] {
            body();
            const std::lock_guard lock(mutex);
            ended.push_back(name);
        });
    };
    App app(records);
    start(app);
    runAndStop(app);
    EXPECT_EQ(ended, (Lines{"notifications", "engine", "engine", "engine", "MobiFlight", "SimConnect", "boards"}));
}

TEST_F(AppRun, AStopInSessionReportsItsEndToTheBoardAndLeavesTheLight) {
    makeSessionPossible();
    configPath = writeConfig(R"(,"outputs":{"debounceMs":1})");
    App app(platform());
    start(app);
    EXPECT_TRUE(waitUntil([&] { return board->led() == fullLight && board->simConnected() == true; }));
    board->clearOutputs();
    runAndStop(app);
    EXPECT_EQ(board->outputs(), Outputs{sessionEnd()});
    EXPECT_EQ(board->led(), fullLight);
    const std::string lost = "[WARN] SimConnect disconnected: shutdown";
    EXPECT_LT(logPosition("[INFO] Application run loop started"), logPosition(lost));
    EXPECT_LT(logPosition(lost), logPosition(disconnected));
    EXPECT_EQ(log().back(), "[INFO] Application run loop stopped");
    // The client has stopped by then, and waits for no further session.
    EXPECT_FALSE(logHas("[INFO] MobiFlight client waiting for SimConnect"));
    EXPECT_EQ(bus.openHandleCount(), 0U);
    EXPECT_FALSE(sim.isOpen());
    EXPECT_EQ(bus.misuseCount(), 0U);
}

TEST_F(AppRun, ALostSessionReachesTheBoardsBeforeTheMobiFlightClient) {
    makeSessionPossible();
    App app(platform());
    app.setHidTraceOverride(true);
    start(app);
    EXPECT_TRUE(waitForLog("[INFO] SimConnect connected"));
    sim.script(SimCall::CallDispatch, {simConnectRemoteDisconnect});
    const std::string waiting = "[INFO] MobiFlight client waiting for SimConnect";
    EXPECT_TRUE(waitForLog(waiting));
    runAndStop(app);
    const Lines lines = log();
    const auto lost =
        std::find(lines.begin(), lines.end(), "[WARN] SimConnect disconnected: dispatch error 0xC000013C");
    EXPECT_EQ(std::count_if(lost, std::find(lost, lines.end(), waiting),
                            [](const std::string& line) {
                                return line.starts_with("[DEBUG] HID OUT sim_status device=0000000000000001 ");
                            }),
              1);
}

} // namespace
