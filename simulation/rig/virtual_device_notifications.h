#pragma once

#include "platform/platform.h"

#include <chrono>
#include <memory>

/// Notifies one run of the bridge when boards are plugged or pulled. Any thread may call any member.
class VirtualDeviceNotifications {
public:
    /// Unavailable: the bridge's attempt to listen fails.
    explicit VirtualDeviceNotifications(bool available);

    /// May outlive this object.
    DeviceNotificationSource source() const;
    /// Reports that a board was plugged or pulled.
    void notify();
    /// Waits until the bridge has handled every notification so far, or has ended; false at the limit.
    bool waitUntilHandled(std::chrono::milliseconds limit) const;

private:
    struct State;
    std::shared_ptr<State> state;
};
