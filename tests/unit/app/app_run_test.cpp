#include "tests/unit/app/app_fixture.h"

#include <atomic>
#include <thread>

namespace {

using Lines = std::vector<std::string>;

constexpr std::uint32_t responseRequest = 0x1200;
constexpr std::uint32_t lvarsRequest = 0x1201;

class AppRun : public AppTest {
protected:
    void start(App& app) { ASSERT_TRUE(app.init(configPath, false, error)) << error; }

    /// Waits out the console thread, which nobody joins and which the standard input must outlive.
    bool allThreadsEnd() {
        return waitUntil([this] { return host.threadsEnded() == host.threadsStarted(); });
    }

    void confirmRegistration() { sim.deliverText(responseRequest, "MF.Clients.Add.VantrelBridgeHID.Finished", 256); }

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

TEST_F(AppRun, ConnectionIsToldToTheBoardAndItsEndBeforeTheStop) {
    makeSessionPossible();
    App app(platform());
    start(app);
    EXPECT_TRUE(waitUntil([this] { return board->simConnected() == true; }));
    runAndStop(app);
    EXPECT_EQ(board->simConnected(), false);
    const Lines lines = log();
    const auto ended = std::find(lines.begin(), lines.end(), "[WARN] SimConnect disconnected: shutdown");
    ASSERT_NE(ended, lines.end());
    EXPECT_NE(std::find(ended, lines.end(), "[INFO] HID device disconnected: 0000000000000001"), lines.end());
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

TEST_F(AppRun, LastLineOfAStopIsTheRunLoops) {
    App app(platform());
    start(app);
    runAndStop(app);
    const Lines lines = log();
    EXPECT_NE(std::find(lines.begin(), lines.end(), "[INFO] Application run loop started"), lines.end());
    EXPECT_EQ(lines.back(), "[INFO] Application run loop stopped");
}

TEST_F(AppRun, TwoStopSourcesAtOnceHaveTheEffectOfOne) {
    makeSessionPossible();
    // The user's command and the simulator's end meet here and go on together.
    std::atomic<int> arrivals{0};
    const auto meet = [&arrivals] {
        ++arrivals;
        EXPECT_TRUE(waitUntil([&] { return arrivals == 2; }));
    };
    const ConsoleInput input("quit\n", meet);
    App app(platform());
    testing::internal::CaptureStdout();
    ASSERT_TRUE(app.init(configPath, true, error)) << error;
    ASSERT_TRUE(waitUntil([this] { return logHas("[INFO] SimConnect connected", true); }));
    board->clearOutputs();
    std::atomic<bool> returned{false};
    std::thread runner([&app, &returned] {
        app.run();
        returned = true;
    });
    EXPECT_TRUE(waitUntil([&] { return arrivals == 1; }));
    sim.setHook([&](SimCall call) {
        if (call == SimCall::CallDispatch && arrivals == 1) {
            host.setProcesses({});
            sim.deliverQuit();
            meet();
        }
    });
    const bool stopped = waitUntil([&] { return returned.load(); });
    EXPECT_TRUE(stopped);
    if (!stopped) {
        app.requestStop();
    }
    runner.join();
    EXPECT_TRUE(allThreadsEnd());
    testing::internal::GetCapturedStdout();
    const Lines lines = log(true);
    for (const char* line :
         {"[INFO] Stop requested from console", "[INFO] Simulator closed; requesting application shutdown",
          "[WARN] SimConnect disconnected: SimConnect quit", "[INFO] HID device disconnected: 0000000000000001",
          "[INFO] Application run loop stopped"}) {
        EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 1) << line;
    }
    EXPECT_EQ(sim.count(SimCall::Close), 1U);
    const HidProtocol::Report status = HidProtocol::encodeSimStatus(false);
    const BoardOutput sessionEnd{OutputCall::Write, {status.begin(), status.end()}};
    const std::vector<BoardOutput> outputs = board->outputs();
    EXPECT_EQ(std::count(outputs.begin(), outputs.end(), sessionEnd), 1);
}

TEST_F(AppRun, ConsoleQuitWorksInAnyCase) {
    const ConsoleInput input("QuIt\nbootsel\n");
    App app(platform());
    testing::internal::CaptureStdout();
    ASSERT_TRUE(app.init(configPath, true, error)) << error;
    app.run();
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(logHas("[INFO] Console commands: bootsel, quit", true));
    EXPECT_TRUE(logHas("[INFO] Stop requested from console", true));
    EXPECT_FALSE(logHas("[INFO] Sending BOOTSEL command to devices", true));
}

TEST_F(AppRun, ConsoleCommandsWithABlankAndOtherLinesDoNothing) {
    // "boot" shows that the lines before it were all read, and none was taken for a command.
    const ConsoleInput input("\n quit\nquit \n\tquit\nquit\r\n exit\nexit \n bootsel\nbootsel \nboot sel\n boot\nboot "
                             "\nhelp\nboot\nquit\n");
    App app(platform());
    testing::internal::CaptureStdout();
    ASSERT_TRUE(app.init(configPath, true, error)) << error;
    app.run();
    testing::internal::GetCapturedStdout();
    const Lines lines = log(true);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "[INFO] Sending BOOTSEL command to devices"), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "[INFO] Stop requested from console"), 1);
}

TEST_F(AppRun, ConsoleExitStopsToo) {
    const ConsoleInput input("EXIT\n");
    App app(platform());
    testing::internal::CaptureStdout();
    ASSERT_TRUE(app.init(configPath, true, error)) << error;
    app.run();
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(logHas("[INFO] Stop requested from console", true));
}

TEST_F(AppRun, ConsoleBootselReachesTheBoards) {
    const ConsoleInput input("BootSel\nboot\nquit\n");
    bus.plug(board);
    App app(platform());
    testing::internal::CaptureStdout();
    ASSERT_TRUE(app.init(configPath, true, error)) << error;
    app.run();
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(board->inBootsel());
    const Lines lines = log(true);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "[INFO] Sending BOOTSEL command to devices"), 2);
    EXPECT_TRUE(logHas("[INFO] BOOTSEL command sent to 0000000000000001 via WriteFile", true));
}

TEST_F(AppRun, EndOfConsoleInputDoesNotStopTheRun) {
    const ConsoleInput input("");
    App app(platform());
    testing::internal::CaptureStdout();
    ASSERT_TRUE(app.init(configPath, true, error)) << error;
    std::thread stopper([this, &app] {
        EXPECT_TRUE(waitUntil([this] { return logHas("[INFO] Console commands: bootsel, quit", true); }));
        app.requestStop();
    });
    app.run();
    stopper.join();
    testing::internal::GetCapturedStdout();
    EXPECT_FALSE(logHas("[INFO] Stop requested from console", true));
}

TEST_F(AppRun, WithoutConsoleNoConsoleThreadIsStarted) {
    const ConsoleInput input("");
    App app(platform());
    start(app);
    const std::size_t threads = host.threadsStarted();
    runAndStop(app);
    EXPECT_EQ(host.threadsStarted(), threads);
    EXPECT_FALSE(logHas("[INFO] Console commands: bootsel, quit"));
}

TEST_F(AppRun, WithoutConsoleAQuitOnStandardInputIsIgnored) {
    const ConsoleInput input("quit\n");
    App app(platform());
    start(app);
    std::atomic<bool> returned{false};
    std::thread runner([&app, &returned] {
        app.run();
        returned = true;
    });
    EXPECT_TRUE(waitUntil([this] { return logHas("[INFO] Application run loop started"); }));
    EXPECT_TRUE(waitForPolls());
    EXPECT_FALSE(returned);
    app.requestStop();
    runner.join();
    std::string unread;
    std::getline(std::cin, unread);
    EXPECT_EQ(unread, "quit");
    EXPECT_FALSE(logHas("[INFO] Stop requested from console"));
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

TEST_F(AppRun, EachPlugAndUnplugIsOneScanOnTheNotificationThread) {
    host.holdSleeps();
    std::mutex mutex;
    std::vector<std::thread::id> scans;
    Platform records = platform();
    records.hid.enumerate = [&, enumerate = records.hid.enumerate] {
        const std::lock_guard lock(mutex);
        scans.push_back(std::this_thread::get_id());
        return enumerate();
    };
    const auto takeScans = [&] {
        const std::lock_guard lock(mutex);
        return std::exchange(scans, {});
    };
    App app(records);
    start(app);
    // The start's own scan and the scan thread's, which sleeps from then on.
    ASSERT_TRUE(waitUntil([&] {
        const std::lock_guard lock(mutex);
        return scans.size() == 2;
    }));
    takeScans();
    bus.plug(board);
    notifications.announceChange();
    EXPECT_TRUE(notifications.waitForChanges(1));
    EXPECT_EQ(takeScans(), std::vector{notifications.thread()});
    EXPECT_TRUE(logHas("[INFO] HID device connected: 0000000000000001 index=0"));
    bus.unplug(board);
    notifications.announceChange();
    EXPECT_TRUE(notifications.waitForChanges(2));
    EXPECT_EQ(takeScans(), std::vector{notifications.thread()});
    EXPECT_TRUE(logHas("[INFO] HID device disconnected: 0000000000000001"));
    host.letSleepsPass();
    runAndStop(app);
    EXPECT_EQ(notifications.calls(), (Lines{"setUp", "change", "change", "tearDown"}));
}

TEST_F(AppRun, TheNotificationThreadEndsBeforeTheBoardsAreDisconnected) {
    bus.plug(board);
    std::mutex mutex;
    Lines order;
    const auto note = [&](const std::string& step) {
        const std::lock_guard lock(mutex);
        order.push_back(step);
    };
    Platform records = platform();
    records.deviceNotifications.tearDown = [&] {
        // Slow, so that a stop that doesn't wait for it is seen.
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        note("notifications ended");
    };
    records.hid.cancelReads = [&note, cancel = records.hid.cancelReads](HidHandle handle) {
        note("board disconnected");
        cancel(handle);
    };
    App app(records);
    start(app);
    runAndStop(app);
    EXPECT_EQ(order, (Lines{"notifications ended", "board disconnected"}));
}

TEST_F(AppRun, AStopInSessionTellsTheBoardItsEndButLeavesTheLight) {
    makeSessionPossible();
    configPath = writeConfig(R"(,"outputs":{"debounceMs":1})");
    App app(platform());
    start(app);
    const LedCommand backlight{1, 80, 0, 0, 0};
    EXPECT_TRUE(waitUntil([&] { return board->led() == backlight; }));
    board->clearOutputs();
    runAndStop(app);
    const HidProtocol::Report ended = HidProtocol::encodeSimStatus(false);
    EXPECT_EQ(board->outputs(), (std::vector<BoardOutput>{{OutputCall::Write, {ended.begin(), ended.end()}}}));
    EXPECT_EQ(board->led(), backlight);
}

TEST_F(AppRun, AStopEndsAllThreadsButTheBoardsBeforeTheSession) {
    makeSessionPossible();
    App app(platform());
    start(app);
    EXPECT_TRUE(waitUntil([this] { return logHas("[INFO] SimConnect connected"); }));
    std::size_t endedAtClose = 0;
    sim.setHook([&](SimCall call) {
        if (call == SimCall::Close) {
            endedAtClose = host.threadsEnded();
        }
    });
    runAndStop(app);
    constexpr std::size_t scanAndReader = 2;
    EXPECT_EQ(endedAtClose, host.threadsStarted() - scanAndReader);
}

TEST_F(AppRun, AStopInSessionLeavesNoMobiFlightClientWaiting) {
    makeSessionPossible();
    App app(platform());
    start(app);
    EXPECT_TRUE(waitUntil([this] { return logHas("[INFO] SimConnect connected"); }));
    runAndStop(app);
    EXPECT_TRUE(logHas("[WARN] SimConnect disconnected: shutdown"));
    EXPECT_FALSE(logHas("[INFO] MobiFlight client waiting for SimConnect"));
}

TEST_F(AppRun, ALostSessionIsToldToTheBoardsBeforeTheMobiFlightClient) {
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
    const auto told = std::find(lost, lines.end(), waiting);
    ASSERT_NE(told, lines.end());
    EXPECT_EQ(std::count_if(lost, told, startsWith("[DEBUG] HID OUT sim_status device=0000000000000001 ")), 1);
}

TEST_F(AppRun, NothingIsLeftOpenAfterTheStop) {
    makeSessionPossible();
    {
        App app(platform());
        start(app);
        EXPECT_TRUE(waitUntil([this] { return logHas("[INFO] SimConnect connected"); }));
        runAndStop(app);
    }
    EXPECT_EQ(bus.openHandleCount(), 0U);
    EXPECT_FALSE(sim.isOpen());
    EXPECT_EQ(bus.misuseCount(), 0U);
}

TEST_F(AppRun, AnAppThatWasNeverStartedIsDestroyedQuietly) {
    { const App app(platform()); }
    EXPECT_TRUE(log().empty());
}

} // namespace
