#include "tests/unit/platform/listening.h"

namespace {

TEST(DeviceNotifications, RunUntilTheirEndIsRequestedAndCanBeSetUpAgain) {
    const DeviceNotificationSource source = systemPlatform().deviceNotifications;
    for (int round = 0; round < 3; ++round) {
        const Listening listening(source);
        ASSERT_TRUE(listening.succeeded) << listening.error;
        EXPECT_EQ(listening.error, "unchanged");
        source.requestEnd();
    }
}

TEST(DeviceNotifications, EndAtOnceWhenThatIsRequestedBeforeTheyRun) {
    const DeviceNotificationSource source = systemPlatform().deviceNotifications;
    std::string error;
    int changes = 0;
    ASSERT_TRUE(source.setUp(error)) << error;
    source.requestEnd();
    source.run([&] { ++changes; });
    source.tearDown();
    EXPECT_EQ(changes, 0);
}

TEST(DeviceNotifications, OfTwoSourcesEndIndependently) {
    const Listening first(systemPlatform().deviceNotifications);
    const Listening second(systemPlatform().deviceNotifications);
    ASSERT_TRUE(first.succeeded && second.succeeded);
    second.source.requestEnd();
    first.source.requestEnd();
}

} // namespace
