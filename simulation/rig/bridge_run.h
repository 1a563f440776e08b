#pragma once

#include "platform/platform.h"
#include "simulation/rig/console_streams.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

class App;

/// One run of the bridge, from its start to its end, on a thread in place of a process's main thread. Driven by one
/// thread.
class BridgeRun {
public:
    /// Called once on the bridge's thread, when its process would have ended.
    using ExitCallback = std::function<void(int exitCode)>;

    explicit BridgeRun(Platform platform, ExitCallback exitCallback);
    /// Stops the bridge and waits for its end.
    ~BridgeRun();
    BridgeRun(const BridgeRun&) = delete;
    BridgeRun& operator=(const BridgeRun&) = delete;

    /// Returns when the bridge has started, or has failed to.
    void start(const std::string& configPath, bool consoleMode);
    bool started() const { return thread.joinable(); }
    /// Between a successful start and the end.
    bool running() const;
    /// What the user's interrupt does. Does nothing unless the bridge is running.
    void requestStop();
    /// Types a line at its console. Does nothing without console mode.
    void typeLine(const std::string& line);

private:
    Platform platform;
    const ExitCallback exitCallback;
    std::thread thread;
    std::optional<ConsoleStreams> console;

    /// The bridge's threads that are still alive. Its console thread is detached, so only this count shows when it
    /// has ended, and with it the last user of the console's streams.
    struct LiveThreads {
        // Guards `count`.
        std::mutex mutex;
        std::condition_variable changed;
        int count = 0;
    };
    std::shared_ptr<LiveThreads> liveThreads = std::make_shared<LiveThreads>();

    // Guards `app` and `startDone`.
    mutable std::mutex mutex;
    std::condition_variable changed;
    /// Null unless the bridge is running.
    App* app = nullptr;
    bool startDone = false;

    void countThreads();
    void waitForThreads();
    void mainThread(const std::string& configPath, bool consoleMode);
    int runApp(const std::string& configPath, bool consoleMode);
    void setApp(App* current);
};
