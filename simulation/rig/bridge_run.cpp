#include "simulation/rig/bridge_run.h"

#include "app/app.h"
#include "logging/logger.h"

#include <utility>

BridgeRun::BridgeRun(Platform platform, ExitCallback exitCallback)
    : platform(std::move(platform)), exitCallback(std::move(exitCallback)) {
    countThreads();
}

BridgeRun::~BridgeRun() {
    requestStop();
    if (thread.joinable()) {
        thread.join();
    }
}

void BridgeRun::start(const std::string& configPath, bool consoleMode) {
    if (consoleMode) {
        console.emplace();
    }
    thread = std::thread([this, configPath, consoleMode] { mainThread(configPath, consoleMode); });
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return startDone; });
}

bool BridgeRun::running() const {
    const std::lock_guard lock(mutex);
    return app != nullptr;
}

void BridgeRun::requestStop() {
    const std::lock_guard lock(mutex);
    if (app != nullptr) {
        app->requestStop();
    }
}

void BridgeRun::typeLine(const std::string& line) {
    if (console) {
        console->type(line);
    }
}

void BridgeRun::countThreads() {
    platform.host.startThread = [live = liveThreads, start = platform.host.startThread](std::function<void()> body) {
        {
            const std::lock_guard lock(live->mutex);
            ++live->count;
        }
        return start([live, body = std::move(body)] {
            body();
            const std::lock_guard lock(live->mutex);
            --live->count;
            live->changed.notify_all();
        });
    };
}

void BridgeRun::waitForThreads() {
    std::unique_lock lock(liveThreads->mutex);
    liveThreads->changed.wait(lock, [this] { return liveThreads->count == 0; });
}

void BridgeRun::mainThread(const std::string& configPath, bool consoleMode) {
    const int exitCode = runApp(configPath, consoleMode);
    Logger::instance().close();
    {
        const std::lock_guard lock(mutex);
        startDone = true;
        changed.notify_all();
    }
    exitCallback(exitCode);
}

// What the program's main does.
int BridgeRun::runApp(const std::string& configPath, bool consoleMode) {
    App bridge(platform);
    std::string error;
    if (!bridge.init(configPath, consoleMode, error)) {
        logError("Failed to initialize: " + error);
        return 1;
    }
    setApp(&bridge);
    bridge.run();
    setApp(nullptr);
    if (console) {
        console->end();
    }
    waitForThreads();
    return 0;
}

void BridgeRun::setApp(App* current) {
    const std::lock_guard lock(mutex);
    app = current;
    startDone = true;
    changed.notify_all();
}
