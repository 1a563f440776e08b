#include "tests/unit/app/app_fixture.h"

#include <thread>

namespace {

using Lines = std::vector<std::string>;
using Outputs = std::vector<BoardOutput>;

constexpr std::uint32_t responseRequest = 0x1200;
constexpr std::uint32_t lvarsRequest = 0x1201;

class AppRun : public AppTest {
protected:
    void start(App& app) { ASSERT_TRUE(app.init(configPath, false, error)) << error; }

    /// Waits for the console thread, which nobody joins and which uses the application and the standard input.
    bool allThreadsEnd() {
        return waitUntil([this] { return host.threadsEnded() == host.threadsStarted(); });
    }

    void confirmRegistration() { sim.deliverText(responseRequest, "MF.Clients.Add.VantrelBridgeHID.Finished", 256); }

    static BoardOutput sessionEnd() {
        const HidProtocol::Report report = HidProtocol::encodeSimStatus(false);
        return {OutputCall::Write, {report.begin(), report.end()}};
    }

    /// The number of the log's first such line; that of the line after the last without one.
    std::size_t logLine(const std::string& line, bool console = false) const {
        const Lines lines = log(console);
        return static_cast<std::size_t>(std::find(lines.begin(), lines.end(), line) - lines.begin());
    }

    std::ptrdiff_t logCount(const std::string& line, bool console = false) const {
        const Lines lines = log(console);
        return std::count(lines.begin(), lines.end(), line);
    }

    bool wroteCommand(const std::string& text) {
        const Lines commands = sim.commands();
        return std::find(commands.begin(), commands.end(), text) != commands.end();
    }
};

TEST_F(AppRun, APressReachesTheSimulatorAsACommandAndItsDummy) {
    makeSessionPossible();
    App app(platform());
    start(app);
    ASSERT_TRUE(waitUntil([this] { return wroteCommand("MF.Clients.Add.VantrelBridgeHID"); }));
    confirmRegistration();
    ASSERT_TRUE(waitUntil([this] { return wroteCommand("MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)"); }));
    board->press(21);
    ASSERT_TRUE(waitUntil([this] { return wroteCommand("MF.DummyCmd"); }));
    runAndStop(app);
    EXPECT_EQ(sim.commands(),
              (Lines{"MF.Clients.Add.VantrelBridgeHID", "MF.SimVars.Clear",
                     "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)", "MF.SimVars.Set.1 1 (>K:PRESSED)", "MF.DummyCmd"}));
}

TEST_F(AppRun, WithoutABoardNoSessionIsOpened) {
    host.setProcesses({"FlightSimulator.exe"});
    App app(platform());
    start(app);
    EXPECT_TRUE(waitUntil([this] { return logHas("[INFO] Waiting for HID device to connect"); }));
    runAndStop(app);
    EXPECT_EQ(sim.count(SimCall::Open), 0U);
}

TEST_F(AppRun, BatteryAndLightReachTheBoardsLight) {
    makeSessionPossible();
    configPath = writeConfig(R"(,"logging":{"debug":1},"outputs":{"debounceMs":1})");
    App app(platform());
    start(app);
    EXPECT_TRUE(waitUntil([this] { return board->led() == LedCommand{1, 80, 0, 0, 0}; }));
    sim.deliverBattery(0);
    EXPECT_TRUE(waitUntil([this] { return board->led() == LedCommand{2, 0, 5, 1000, 50}; }));
    EXPECT_TRUE(logHas("[DEBUG] State update: master battery 2=0"));
    sim.deliverBattery(-1);
    sim.deliverText(lvarsRequest, "0.25", 4096);
    EXPECT_TRUE(waitUntil([this] { return board->led() == LedCommand{1, 25, 0, 0, 0}; }));
    EXPECT_TRUE(logHas("[DEBUG] State update: master battery 2=1"));
    runAndStop(app);
}

TEST_F(AppRun, ExtensionsReachTheSubsystems) {
    makeSessionPossible();
    configPath = writeConfig(R"json(,"logging":{"debug":1},"extensions":{"renewRegistration":1,"ownChannels":1,
        "lvarNumbers":1,"batteryIndex":1,"lightVariable":"(A:LIGHT POTENTIOMETER:3, percent over 100)"})json");
    App app(platform());
    start(app);
    ASSERT_TRUE(waitUntil([this] { return sim.commands().size() == 3; }));
    sim.deliverText(responseRequest, "MF.Clients.Add.VantrelBridgeHID.Finished", 256);
    const Lines expected{"MF.Ping", "MF.Clients.Add.VantrelBridgeHID", "MF.DummyCmd", "MF.SimVars.Clear",
                         "MF.SimVars.Add.(A:LIGHT POTENTIOMETER:3, percent over 100)"};
    EXPECT_TRUE(waitUntil([&] { return sim.commands() == expected; }));
    sim.deliverBattery(1);
    sim.deliverClientData(lvarsRequest, {'3', '3', '3', '?'});
    const char* const light = "[DEBUG] State update: backlight (A:LIGHT POTENTIOMETER:3, percent over 100)=0.700000";
    EXPECT_TRUE(waitUntil([&] { return logHas(light); }));
    EXPECT_TRUE(logHas("[DEBUG] State update: master battery 1=1"));
    runAndStop(app);
    const Lines calls = sim.calls();
    const auto has = [&](const char* part) {
        return std::any_of(calls.begin(), calls.end(),
                           [&](const auto& call) { return call.find(part) != std::string::npos; });
    };
    EXPECT_TRUE(has("ELECTRICAL MASTER BATTERY:1\""));
    EXPECT_TRUE(has("\"VantrelBridgeHID.Command\""));
}

TEST_F(AppRun, QuitOfTheSimulatorEndsTheRun) {
    makeSessionPossible();
    App app(platform());
    start(app);
    ASSERT_TRUE(waitUntil([this] { return logHas("[INFO] SimConnect connected"); }));
    sim.deliverQuit();
    app.run();
    EXPECT_TRUE(logHas("[INFO] Simulator closed; requesting application shutdown"));
    EXPECT_EQ(log().back(), "[INFO] Application run loop stopped");
}

TEST_F(AppRun, ASecondStopSourceAddsNothing) {
    makeSessionPossible();
    // The user's command arrives while the application stops because the simulator has quit.
    const ConsoleInput input("quit\n", [this] {
        host.setProcesses({});
        sim.deliverQuit();
        EXPECT_TRUE(waitUntil([this] { return sim.count(SimCall::Close) == 1; }));
    });
    testing::internal::CaptureStdout();
    App app(platform());
    ASSERT_TRUE(app.init(configPath, true, error)) << error;
    ASSERT_TRUE(waitUntil([this] { return logHas("[INFO] SimConnect connected", true); }));
    app.run();
    EXPECT_TRUE(allThreadsEnd());
    testing::internal::GetCapturedStdout();
    for (const char* line :
         {"[INFO] Stop requested from console", "[INFO] Simulator closed; requesting application shutdown",
          "[WARN] SimConnect disconnected: SimConnect quit", "[INFO] HID device disconnected: 0000000000000001",
          "[INFO] Application run loop stopped"}) {
        EXPECT_EQ(logCount(line, true), 1) << line;
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
    ASSERT_TRUE(app.init(configPath, true, error)) << error;
    app.run();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(logCount("[INFO] Console commands: bootsel, quit", true), 1);
    EXPECT_EQ(logCount("[INFO] Stop requested from console", true), 1);
    const std::string sending = "[INFO] Sending BOOTSEL command to devices";
    EXPECT_EQ(logCount(sending, true), GetParam().sent);
    EXPECT_EQ(board->inBootsel(), GetParam().sent > 0);
    if (GetParam().sent > 0) {
        EXPECT_LT(logLine(sending, true),
                  logLine("[INFO] BOOTSEL command sent to 0000000000000001 via WriteFile", true));
    }
}

// Of the fourth input only "boot" is a command; every other line has a blank or is no command at all.
INSTANTIATE_TEST_SUITE_P(Inputs, AppRunConsole,
                         testing::Values(ConsoleCase{"QuIt\nbootsel\n", 0}, ConsoleCase{"EXIT\n", 0},
                                         ConsoleCase{"BootSel\nboot\nquit\n", 2},
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
    App app(platform());
    testing::internal::CaptureStdout();
    ASSERT_TRUE(app.init(configPath, true, error)) << error;
    runAndStop(app);
    EXPECT_TRUE(allThreadsEnd());
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(logHas("[INFO] Console commands: bootsel, quit", true));
    EXPECT_FALSE(logHas("[INFO] Sending BOOTSEL command to devices", true));
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
    EXPECT_TRUE(logHas("[INFO] HID device disconnected: 0000000000000001"));
    const std::vector<std::thread::id> all = scanners();
    EXPECT_EQ(std::vector(all.begin() + 2, all.end()), std::vector(2, notifications.thread()));
    host.letSleepsPass();
    runAndStop(app);
    EXPECT_EQ(notifications.calls(), (Lines{"setUp", "change", "change", "tearDown"}));
}

TEST_F(AppRun, StopsTheSubsystemsOneAfterTheOther) {
    // The threads in the order in which the subsystems start them; without a board there are no others.
    const Lines names{"engine", "engine", "engine", "boards", "MobiFlight", "SimConnect", "notifications"};
    std::mutex mutex;
    std::size_t started = 0;
    Lines ended;
    Platform records = platform();
    records.host.startThread = [&](std::function<void()> body) {
        const std::string name = started < names.size() ? names[started] : "unexpected";
        ++started;
        return std::thread([&, name, body = std::move(body)] {
            body();
            const std::lock_guard lock(mutex);
            ended.push_back(name);
        });
    };
    App app(records);
    start(app);
    runAndStop(app);
    EXPECT_EQ(started, names.size());
    EXPECT_EQ(ended, (Lines{"notifications", "engine", "engine", "engine", "MobiFlight", "SimConnect", "boards"}));
}

TEST_F(AppRun, AStopInSessionReportsItsEndToTheBoardAndLeavesTheLight) {
    makeSessionPossible();
    configPath = writeConfig(R"(,"outputs":{"debounceMs":1})");
    App app(platform());
    start(app);
    const LedCommand backlight{1, 80, 0, 0, 0};
    EXPECT_TRUE(waitUntil([&] { return board->led() == backlight && board->simConnected() == true; }));
    board->clearOutputs();
    runAndStop(app);
    EXPECT_EQ(board->outputs(), Outputs{sessionEnd()});
    EXPECT_EQ(board->led(), backlight);
    EXPECT_LT(logLine("[INFO] Application run loop started"), logLine("[WARN] SimConnect disconnected: shutdown"));
    EXPECT_LT(logLine("[WARN] SimConnect disconnected: shutdown"),
              logLine("[INFO] HID device disconnected: 0000000000000001"));
    EXPECT_EQ(log().back(), "[INFO] Application run loop stopped");
    // The client has stopped by then, and waits for no further session.
    EXPECT_FALSE(logHas("[INFO] MobiFlight client waiting for SimConnect"));
    EXPECT_EQ(bus.openHandleCount(), 0U);
    EXPECT_FALSE(sim.isOpen());
    EXPECT_EQ(bus.misuseCount(), 0U);
}

TEST_F(AppRun, ALostSessionReachesTheBoardsBeforeTheMobiFlightClient) {
    makeSessionPossible();
    folder.write("config/config.json", R"({"hid":{"vid":"1234","pid":"ABCD","scanIntervalMs":20,"trace":1},)"
                                       R"("mappings":{"buttonConfigPath":"buttons.json"}})");
    App app(platform());
    start(app);
    ASSERT_TRUE(waitUntil([this] { return logHas("[INFO] SimConnect connected"); }));
    sim.script(SimCall::CallDispatch, {simConnectRemoteDisconnect});
    const std::string waiting = "[INFO] MobiFlight client waiting for SimConnect";
    EXPECT_TRUE(waitUntil([&] { return logHas(waiting); }));
    runAndStop(app);
    const Lines lines = log();
    const auto startsWith = [](const std::string& head) {
        return [head](const std::string& line) { return line.rfind(head, 0) == 0; };
    };
    const auto lost =
        std::find_if(lines.begin(), lines.end(), startsWith("[WARN] SimConnect disconnected: dispatch error "));
    const auto reported = std::find(lost, lines.end(), waiting);
    ASSERT_NE(reported, lines.end());
    EXPECT_EQ(std::count_if(lost, reported, startsWith("[DEBUG] HID OUT sim_status device=0000000000000001 ")), 1);
}

} // namespace
