#include "platform/platform.h"
#include "platform/windows/hid_api.h"

#include <dbt.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <string>
#include <thread>

namespace {

/// The listening window of this process, and the number of changes that it told of.
class NotificationWindow : public testing::Test {
protected:
    NotificationWindow() {
        std::promise<bool> setUp;
        thread = std::thread([this, &setUp] {
            std::string error;
            const bool isListening = source.setUp(error);
            setUp.set_value(isListening);
            if (isListening) {
                source.run([this] {
                    ++changes;
                    lastThread = GetCurrentThreadId();
                });
                source.tearDown();
            }
        });
        succeeded = setUp.get_future().get();
        window = FindWindowExA(HWND_MESSAGE, nullptr, "VantrelBridgeHidNotify", "Vantrel HID Notify");
    }
    ~NotificationWindow() override {
        source.requestEnd();
        thread.join();
        EXPECT_EQ(FindWindowExA(HWND_MESSAGE, nullptr, "VantrelBridgeHidNotify", nullptr), nullptr);
    }

    LRESULT send(WPARAM event, DWORD deviceType) const {
        DEV_BROADCAST_HDR header{};
        header.dbch_size = sizeof header;
        header.dbch_devicetype = deviceType;
        return SendMessageA(window, WM_DEVICECHANGE, event, reinterpret_cast<LPARAM>(&header));
    }

    DeviceNotificationSource source = systemPlatform().deviceNotifications;
    std::atomic<int> changes{0};
    std::atomic<DWORD> lastThread{0};
    bool succeeded = false;
    HWND window = nullptr;
    std::thread thread;
};

TEST_F(NotificationWindow, IsAMessageOnlyWindowOfItsClassAndTitle) {
    EXPECT_TRUE(succeeded);
    EXPECT_NE(window, nullptr);
}

TEST_F(NotificationWindow, ArrivalOfAnInterfaceIsOneChangeOnTheListeningThread) {
    EXPECT_EQ(send(DBT_DEVICEARRIVAL, DBT_DEVTYP_DEVICEINTERFACE), 0);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(lastThread, GetWindowThreadProcessId(window, nullptr));
}

TEST_F(NotificationWindow, RemovalOfAnInterfaceIsOneChange) {
    EXPECT_EQ(send(DBT_DEVICEREMOVECOMPLETE, DBT_DEVTYP_DEVICEINTERFACE), 0);
    EXPECT_EQ(changes, 1);
}

TEST_F(NotificationWindow, OtherEventsAreNoChange) {
    for (const WPARAM event : {DBT_DEVNODES_CHANGED, DBT_DEVICEQUERYREMOVE, DBT_DEVICEREMOVEPENDING}) {
        EXPECT_EQ(send(event, DBT_DEVTYP_DEVICEINTERFACE), 0);
    }
    EXPECT_EQ(changes, 0);
}

TEST_F(NotificationWindow, OtherKindsOfDeviceAreNoChange) {
    EXPECT_EQ(send(DBT_DEVICEARRIVAL, DBT_DEVTYP_VOLUME), 0);
    EXPECT_EQ(changes, 0);
}

TEST_F(NotificationWindow, EventWithoutDataIsNoChange) {
    EXPECT_EQ(SendMessageA(window, WM_DEVICECHANGE, DBT_DEVICEARRIVAL, 0), 0);
    EXPECT_EQ(changes, 0);
}

} // namespace
