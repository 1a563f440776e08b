#include "platform/windows/device_notifications.h"
#include "platform/windows/hid_api.h"
#include "tests/unit/platform/listening.h"

#include <dbt.h>

#include <atomic>
#include <cstring>
#include <optional>
#include <string>

namespace {

constexpr const char* className = "VantrelBridgeHidNotify";

/// The listening window of this process, and the number of changes that it reported.
class NotificationWindow : public testing::Test {
protected:
    NotificationWindow() {
        EXPECT_TRUE(listening.succeeded) << listening.error;
        EXPECT_NE(window, nullptr);
    }
    ~NotificationWindow() override { listening.source.requestEnd(); }

    static void send(HWND recipient, WPARAM event, DWORD deviceType = DBT_DEVTYP_DEVICEINTERFACE) {
        DEV_BROADCAST_HDR header{sizeof header, deviceType, 0};
        EXPECT_EQ(SendMessageA(recipient, WM_DEVICECHANGE, event, reinterpret_cast<LPARAM>(&header)), 0);
    }

    std::atomic<int> changes{0};
    std::atomic<DWORD> lastThread{0};
    Listening listening{systemPlatform().deviceNotifications, [this] {
                            ++changes;
                            lastThread = GetCurrentThreadId();
                        }};
    const HWND window = FindWindowExA(HWND_MESSAGE, nullptr, className, "Vantrel HID Notify");
};

TEST_F(NotificationWindow, EachArrivalAndRemovalOfAnInterfaceIsAChangeOnTheListeningThread) {
    for (const int before : {0, 2, 4}) {
        send(window, DBT_DEVICEARRIVAL);
        EXPECT_EQ(changes, before + 1);
        send(window, DBT_DEVICEREMOVECOMPLETE);
        EXPECT_EQ(changes, before + 2);
    }
    EXPECT_EQ(lastThread, GetWindowThreadProcessId(window, nullptr));
}

TEST_F(NotificationWindow, EverythingElseIsNoChange) {
    for (const WPARAM event : {DBT_DEVNODES_CHANGED, DBT_DEVICEQUERYREMOVE, DBT_DEVICEREMOVEPENDING}) {
        send(window, event);
    }
    send(window, DBT_DEVICEARRIVAL, DBT_DEVTYP_VOLUME);
    EXPECT_EQ(SendMessageA(window, WM_DEVICECHANGE, DBT_DEVICEARRIVAL, 0), 0);
    // Other messages get the system's own answer.
    EXPECT_EQ(SendMessageA(window, WM_GETTEXTLENGTH, 0, 0), static_cast<LRESULT>(std::strlen("Vantrel HID Notify")));
    EXPECT_EQ(SendMessageA(window, WM_USER, DBT_DEVICEARRIVAL, 0), 0);
    EXPECT_EQ(changes, 0);
}

TEST_F(NotificationWindow, WindowOfTheClassWithoutAnOwnerGetsNothing) {
    const HWND other = CreateWindowExA(0, className, "other", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                       GetModuleHandleA(nullptr), nullptr);
    ASSERT_NE(other, nullptr);
    send(other, DBT_DEVICEARRIVAL);
    EXPECT_EQ(changes, 0);
    DestroyWindow(other);
}

TEST_F(NotificationWindow, IsNoneOfTheDesktopsWindows) {
    const auto stopAtIt = [](HWND other, LPARAM wanted) -> BOOL { return other != reinterpret_cast<HWND>(wanted); };
    EXPECT_TRUE(EnumWindows(stopAtIt, reinterpret_cast<LPARAM>(window)));
    EXPECT_FALSE(IsWindowVisible(window));
}

TEST(NotificationWindowSetUp, FailsWhenTheWindowCannotBeMade) {
    const DeviceNotificationSource source = systemPlatform().deviceNotifications;
    // The class as another part of the process has registered it; the bridge's own is there from an earlier set-up.
    UnregisterClassA(className, GetModuleHandleA(nullptr));
    WNDCLASSEXA refusing{};
    refusing.cbSize = sizeof refusing;
    refusing.lpfnWndProc = [](HWND, UINT, WPARAM, LPARAM) -> LRESULT { return 0; };
    refusing.hInstance = GetModuleHandleA(nullptr);
    refusing.lpszClassName = className;
    EXPECT_NE(RegisterClassExA(&refusing), 0);
    std::string error;
    EXPECT_FALSE(source.setUp(error));
    EXPECT_EQ(error, "Failed to create notification window");
    EXPECT_TRUE(UnregisterClassA(className, GetModuleHandleA(nullptr)));
    EXPECT_TRUE(source.setUp(error)) << error;
    source.tearDown();
    EXPECT_EQ(FindWindowExA(HWND_MESSAGE, nullptr, className, nullptr), nullptr);
}

TEST(NotificationWindowSetUp, AsksForTheHidInterfacesOfAllDevices) {
    struct Asked {
        HANDLE recipient = nullptr;
        DEV_BROADCAST_DEVICEINTERFACE_A filter{};
        DWORD flags = 0;
    };
    std::optional<Asked> asked;
    const DeviceNotificationSource source = windowNotifications([&](HANDLE recipient, void* filter, DWORD flags) {
        asked = Asked{recipient, *static_cast<DEV_BROADCAST_DEVICEINTERFACE_A*>(filter), flags};
        return RegisterDeviceNotificationA(recipient, filter, flags);
    });
    std::string error;
    ASSERT_TRUE(source.setUp(error)) << error;
    ASSERT_TRUE(asked);
    EXPECT_EQ(asked->recipient, FindWindowExA(HWND_MESSAGE, nullptr, className, nullptr));
    EXPECT_EQ(asked->flags, static_cast<DWORD>(DEVICE_NOTIFY_WINDOW_HANDLE));
    EXPECT_EQ(asked->filter.dbcc_size, 32U);
    EXPECT_EQ(asked->filter.dbcc_devicetype, static_cast<DWORD>(DBT_DEVTYP_DEVICEINTERFACE));
    EXPECT_STREQ(asked->filter.dbcc_name, "");
    // GUID_DEVINTERFACE_HID, as a driver knows it.
    constexpr GUID hidInterface{0x4D1E55B2, 0xF16F, 0x11CF, {0x88, 0xCB, 0x00, 0x11, 0x11, 0x00, 0x00, 0x30}};
    EXPECT_TRUE(IsEqualGUID(asked->filter.dbcc_classguid, hidInterface));
    source.tearDown();
}

TEST(NotificationWindowSetUp, FailsWithoutAWindowWhenTheRegistrationFails) {
    HANDLE window = nullptr;
    const DeviceNotificationSource source = windowNotifications([&](HANDLE recipient, void*, DWORD) {
        window = recipient;
        return HDEVNOTIFY{};
    });
    std::string error;
    EXPECT_FALSE(source.setUp(error));
    EXPECT_EQ(error, "RegisterDeviceNotification failed");
    EXPECT_NE(window, nullptr);
    EXPECT_FALSE(IsWindow(static_cast<HWND>(window)));
}

} // namespace
