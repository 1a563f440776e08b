#include "platform/platform.h"

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <thread>

namespace {

/// Runs the source on a thread as the program does, and waits until it is set up.
class Listening {
public:
    explicit Listening(DeviceNotificationSource source) : source(std::move(source)) {
        std::promise<bool> setUp;
        std::future<bool> isSetUp = setUp.get_future();
        thread = std::thread([this, &setUp] {
            const bool isListening = this->source.setUp(error);
            setUp.set_value(isListening);
            if (isListening) {
                this->source.run([] {});
                this->source.tearDown();
            }
        });
        succeeded = isSetUp.get();
    }
    ~Listening() { thread.join(); }

    DeviceNotificationSource source;
    std::string error = "unchanged";
    bool succeeded = false;
    std::thread thread;
};

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
