#pragma once

#include "platform/platform.h"

#include <chrono>
#include <memory>

/// Notifies one run of the bridge of boards that come and go. Any thread may call anything.
class VirtualDeviceNotifications {
public:
    /// Unavailable: the bridge's attempt to listen fails.
    explicit VirtualDeviceNotifications(bool available);

    /// May outlive this object.
    DeviceNotificationSource source() const;
    /// Something was plugged or pulled.
    void notify();
    /// Until the bridge has looked into every notification so far, or has ended; false at the limit.
    bool waitUntilHandled(std::chrono::milliseconds limit) const;

private:
    struct State;
    std::shared_ptr<State> state;
};
