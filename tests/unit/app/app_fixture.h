#pragma once

#include "app/app.h"
#include "simulation/boards/virtual_hid_bus.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_simconnect.h"
#include "tests/support/log_capture.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// Device notifications in memory: a test announces each change. Records the operations in order; all belong on one
/// thread.
class FakeNotifications {
public:
    DeviceNotificationSource record() {
        DeviceNotificationSource source;
        source.setUp = [this](std::string& error) {
            listener = std::this_thread::get_id();
            note("setUp");
            error = setUpError;
            return setUpSucceeds;
        };
        source.run = [this](const std::function<void()>& onChange) { run(onChange); };
        source.tearDown = [this] { note("tearDown"); };
        source.requestEnd = [this] {
            const std::lock_guard lock(mutex);
            ending = true;
            changed.notify_all();
        };
        return source;
    }

    void announceChange() {
        const std::lock_guard lock(mutex);
        ++pendingChanges;
        changed.notify_all();
    }

    std::vector<std::string> calls() {
        const std::lock_guard lock(mutex);
        return recorded;
    }

    /// Waits until the listener has handled `count` announced changes completely.
    bool waitForChanges(int count) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(30), [&] { return handledChanges >= count; });
    }

    std::thread::id thread() const { return listener; }

    // Set before `init`.
    bool setUpSucceeds = true;
    std::string setUpError;

private:
    void note(const std::string& call) {
        const std::lock_guard lock(mutex);
        EXPECT_EQ(std::this_thread::get_id(), thread()) << call;
        recorded.push_back(call);
    }

    void run(const std::function<void()>& onChange) {
        note("run");
        std::unique_lock lock(mutex);
        while (true) {
            changed.wait(lock, [this] { return ending || pendingChanges > 0; });
            if (pendingChanges == 0) {
                return;
            }
            --pendingChanges;
            recorded.emplace_back("change");
            lock.unlock();
            onChange();
            lock.lock();
            ++handledChanges;
            changed.notify_all();
        }
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool ending = false;
    int pendingChanges = 0;
    int handledChanges = 0;
    std::atomic<std::thread::id> listener;
    std::vector<std::string> recorded;
};

/// Replaces standard input by these lines until it is destroyed.
class ConsoleInput {
public:
    explicit ConsoleInput(const std::string& lines) : buffer(lines), before(std::cin.rdbuf(&buffer)) {}
    ~ConsoleInput() {
        std::cin.rdbuf(before);
        std::cin.clear();
    }
    ConsoleInput(const ConsoleInput&) = delete;
    ConsoleInput& operator=(const ConsoleInput&) = delete;

private:
    std::stringbuf buffer;
    std::streambuf* before;
};

/// The whole application on boards, a simulator and a host in memory. Its configuration and log are in a temporary
/// folder. The configuration looks for boards 1234:ABCD every 20 ms.
class AppTest : public testing::Test {
protected:
    TempFolder folder;
    FakeHost host;
    FakeSimConnect sim;
    VirtualHidBus bus;
    FakeNotifications notifications;
    std::shared_ptr<VirtualBoard> board = std::make_shared<VirtualBoard>();
    std::string configPath;
    std::string error;

    void SetUp() override {
        host.executable = folder.path("exe/VantrelBridgeHID");
        host.dataFolder = folder.path("data");
        folder.makeFolder("exe");
        configPath = writeConfig("");
        folder.write("config/buttons.json",
                     R"json({"buttons":[{"name":"KNOB","commands":{"PRESS":{"DEFAULT":"1 (>K:PRESSED)"}}}]})json");
        folder.write("config/map.json", R"({"event_types":{"BUTTON":1},"control_ids":{"KNOB":21}})");
    }

    /// The process has one logger, so each test resets its console echo and folder for the next.
    void TearDown() override {
        Logger::instance().setDebugEnabled(false);
        Logger::instance().configure(folder.path(), "after-the-test", false);
        Logger::instance().close();
    }

    /// Writes config.json with `more` after the required members, as in `,"logging":{"debug":1}`.
    std::string writeConfig(const std::string& more) {
        return folder.write("config/config.json",
                            R"({"hid":{"vid":"1234","pid":"ABCD","scanIntervalMs":20},)"
                            R"("mappings":{"buttonConfigPath":"buttons.json","hidEventMapPath":"map.json"})" +
                                more + "}");
    }

    Platform platform() { return {bus.transport(), sim.library(), notifications.record(), host.record()}; }

    std::string logPath(bool console = false) const {
        return folder.path(console ? "exe/VantrelBridgeHID.log" : "data/VantrelBridge/logs/VantrelBridgeHID.log");
    }

    std::vector<std::string> log(bool console = false) const { return logLines(logPath(console)); }

    std::ptrdiff_t logCount(const std::string& line, bool console = false) const {
        const std::vector<std::string> lines = log(console);
        return std::count(lines.begin(), lines.end(), line);
    }

    bool logHas(const std::string& line, bool console = false) const { return logCount(line, console) > 0; }

    /// The number of the log's first such line; that of the line after the last without one.
    std::ptrdiff_t logPosition(const std::string& line) const {
        const std::vector<std::string> lines = log();
        return std::find(lines.begin(), lines.end(), line) - lines.begin();
    }

    /// Puts the board on the bus and the simulator's process on the list.
    void makeSessionPossible() {
        bus.plug(board);
        host.setProcesses({"explorer.exe", "FlightSimulator.exe"});
    }

    /// Gives a running application the time to check its stop flag. The scan thread alone sleeps about once a
    /// millisecond; two other threads sleep too.
    bool waitForPolls() {
        constexpr std::size_t enough = 500;
        const std::size_t before = host.sleeps().size();
        return waitUntil([&] { return host.sleeps().size() >= before + enough; });
    }

    void start(App& app, bool console = false) { ASSERT_TRUE(app.init(configPath, console, error)) << error; }

    static void runAndStop(App& app) {
        app.requestStop();
        app.run();
    }
};
