#include "simulation/rig/virtual_device_notifications.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

constexpr std::chrono::seconds patience{30};

} // namespace

TEST(VirtualDeviceNotifications, AreHandledWhenTheListenerHasLooked) {
    VirtualDeviceNotifications notifications(true);
    const DeviceNotificationSource source = notifications.source();
    std::string error;
    ASSERT_TRUE(source.setUp(error));
    notifications.notify();
    std::atomic<int> looks{0};
    std::thread listener([&] { source.run([&] { ++looks; }); });
    EXPECT_TRUE(notifications.waitUntilHandled(patience));
    EXPECT_EQ(looks, 1);
    notifications.notify();
    EXPECT_TRUE(notifications.waitUntilHandled(patience));
    EXPECT_EQ(looks, 2);
    source.requestEnd();
    listener.join();
    source.tearDown();
}

TEST(VirtualDeviceNotifications, AreNotWaitedForOnceTheListenerHasEnded) {
    VirtualDeviceNotifications notifications(true);
    notifications.notify();
    EXPECT_FALSE(notifications.waitUntilHandled(std::chrono::milliseconds(1)));
    notifications.source().requestEnd();
    EXPECT_TRUE(notifications.waitUntilHandled(patience));
}

TEST(VirtualDeviceNotifications, AreRefusedWhereThereAreNone) {
    std::string error;
    EXPECT_FALSE(VirtualDeviceNotifications(false).source().setUp(error));
    EXPECT_FALSE(error.empty());
}
