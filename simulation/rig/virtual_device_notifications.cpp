#include "simulation/rig/virtual_device_notifications.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>

struct VirtualDeviceNotifications::State {
    const bool available;
    // Guards all below.
    std::mutex mutex;
    std::condition_variable changed;
    bool ended = false;
    /// How many notifications there were, and how many of them the bridge has handled.
    std::uint64_t sent = 0;
    std::uint64_t handled = 0;

    explicit State(bool available) : available(available) {}

    void run(const std::function<void()>& onChange);
    void end();
};

void VirtualDeviceNotifications::State::run(const std::function<void()>& onChange) {
    std::unique_lock lock(mutex);
    while (!ended) {
        if (const std::uint64_t seen = sent; seen != handled) {
            lock.unlock();
            onChange();
            lock.lock();
            handled = seen;
            changed.notify_all();
        } else {
            changed.wait(lock);
        }
    }
}

void VirtualDeviceNotifications::State::end() {
    const std::lock_guard lock(mutex);
    ended = true;
    changed.notify_all();
}

VirtualDeviceNotifications::VirtualDeviceNotifications(bool available) : state(std::make_shared<State>(available)) {}

DeviceNotificationSource VirtualDeviceNotifications::source() const {
    DeviceNotificationSource source;
    source.setUp = [from = state](std::string& error) {
        if (!from->available) {
            error = "no notifications of boards here";
        }
        return from->available;
    };
    source.run = [from = state](const std::function<void()>& onChange) { from->run(onChange); };
    source.tearDown = [] {};
    source.requestEnd = [to = state] { to->end(); };
    return source;
}

void VirtualDeviceNotifications::notify() {
    const std::lock_guard lock(state->mutex);
    ++state->sent;
    state->changed.notify_all();
}

bool VirtualDeviceNotifications::waitUntilHandled(std::chrono::milliseconds limit) const {
    std::unique_lock lock(state->mutex);
    return state->changed.wait_for(lock, limit, [this] { return state->handled == state->sent || state->ended; });
}
