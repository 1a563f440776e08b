#include "app/app.h"

#include <condition_variable>

/// The result that the notification thread passes to the starter, which owns this.
struct App::NotifyStartState {
    // Guards `done`.
    std::mutex mutex;
    std::condition_variable condition;
    bool done = false;
    bool succeeded = false;
    std::string error;
};

bool App::startDeviceNotifications(std::string& error) {
    if (notifyActive) {
        return true;
    }
    NotifyStartState state;
    notifyThread = platform.host.startThread([this, &state] { notifyLoop(state); });
    {
        std::unique_lock lock(state.mutex);
        state.condition.wait(lock, [&state] { return state.done; });
    }
    if (state.succeeded) {
        return true;
    }
    if (notifyThread.joinable()) {
        notifyThread.join();
    }
    error = state.error.empty() ? "Failed to initialize notification thread" : state.error;
    return false;
}

void App::notifyLoop(NotifyStartState& state) {
    const bool succeeded = platform.deviceNotifications.setUp(state.error);
    if (succeeded) {
        const std::lock_guard lock(notifyMutex);
        notifyActive = true;
    }
    {
        // Signalled under the lock: the starter owns this state and may destroy it as soon as it wakes.
        const std::lock_guard lock(state.mutex);
        state.succeeded = succeeded;
        state.done = true;
        state.condition.notify_one();
    }
    if (!succeeded) {
        return;
    }
    platform.deviceNotifications.run([this] { hid.scanDevices(); });
    platform.deviceNotifications.tearDown();
    notifyActive = false;
}

void App::stopDeviceNotifications() {
    if (!notifyThread.joinable()) {
        return;
    }
    platform.deviceNotifications.requestEnd();
    notifyThread.join();
}
