#include "simulation/rig/virtual_device_notifications.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

TEST(VirtualDeviceNotifications, AreHandledWhenTheListenerHasLookedOrEnded) {
    constexpr std::chrono::seconds patience{30};
    VirtualDeviceNotifications notifications(true);
    const DeviceNotificationSource source = notifications.source();
    notifications.notify();
    EXPECT_FALSE(notifications.waitUntilHandled(std::chrono::milliseconds(1)));
    std::atomic<int> looks{0};
    std::thread listener([&] { source.run([&] { ++looks; }); });
    EXPECT_TRUE(notifications.waitUntilHandled(patience));
    EXPECT_EQ(looks, 1);
    source.requestEnd();
    listener.join();
    notifications.notify();
    EXPECT_TRUE(notifications.waitUntilHandled(patience));
    EXPECT_EQ(looks, 1);
}
