// The application with the system's own news of devices, told by a message that the test makes up.

#include "tests/unit/app/app_fixture.h"

#include <windows.h>

// Needs what windows.h declares.
#include <dbt.h>

#include <mutex>
#include <utility>

namespace {

constexpr const char* className = "VantrelBridgeHidNotify";

HWND notificationWindow() {
    return FindWindowExA(HWND_MESSAGE, nullptr, className, "Vantrel HID Notify");
}

class NotificationThread : public AppTest {
protected:
    NotificationThread() { host.holdSleeps(); }

    Platform platformWithWindow() {
        Platform records = platform();
        records.deviceNotifications = systemPlatform().deviceNotifications;
        records.hid.enumerate = [this, enumerate = records.hid.enumerate] {
            const std::vector<std::string> paths = enumerate();
            const std::lock_guard lock(mutex);
            scans.push_back(GetCurrentThreadId());
            return paths;
        };
        return records;
    }

    /// Initialised, with the scan thread's first pass behind it and no other to come.
    void start(App& app) {
        ASSERT_TRUE(app.init(configPath, false, error)) << error;
        // The start's own, and the scan thread's.
        ASSERT_TRUE(waitUntil([this] {
            const std::lock_guard lock(mutex);
            return scans.size() >= 2;
        }));
    }

    void end(App& app) {
        host.letSleepsPass();
        runAndStop(app);
    }

    static LRESULT tell(WPARAM event) {
        DEV_BROADCAST_HDR header{sizeof header, DBT_DEVTYP_DEVICEINTERFACE, 0};
        return SendMessageA(notificationWindow(), WM_DEVICECHANGE, event, reinterpret_cast<LPARAM>(&header));
    }

    /// The threads of the scans since the last call, in order.
    std::vector<DWORD> takeScans() {
        const std::lock_guard lock(mutex);
        return std::exchange(scans, {});
    }

private:
    std::mutex mutex;
    std::vector<DWORD> scans;
};

TEST_F(NotificationThread, ListensFromInitToTheEndOfRun) {
    App app(platformWithWindow());
    EXPECT_EQ(notificationWindow(), nullptr);
    start(app);
    EXPECT_NE(notificationWindow(), nullptr);
    end(app);
    EXPECT_EQ(notificationWindow(), nullptr);
}

TEST_F(NotificationThread, ScansOnceOnArrivalAndOnceOnRemoval) {
    App app(platformWithWindow());
    start(app);
    const DWORD listener = GetWindowThreadProcessId(notificationWindow(), nullptr);
    EXPECT_NE(listener, GetCurrentThreadId());
    takeScans();
    bus.plug(board);
    EXPECT_EQ(tell(DBT_DEVICEARRIVAL), 0);
    // The message is answered when the scan is over.
    EXPECT_EQ(takeScans(), std::vector{listener});
    EXPECT_TRUE(logHas("[INFO] HID device connected: 0000000000000001 index=0"));
    bus.unplug(board);
    EXPECT_EQ(tell(DBT_DEVICEREMOVECOMPLETE), 0);
    EXPECT_EQ(takeScans(), std::vector{listener});
    EXPECT_TRUE(logHas("[INFO] HID device disconnected: 0000000000000001"));
    end(app);
}

TEST_F(NotificationThread, DoesNotScanOnOtherNews) {
    App app(platformWithWindow());
    start(app);
    bus.plug(board);
    takeScans();
    EXPECT_EQ(tell(DBT_DEVNODES_CHANGED), 0);
    EXPECT_EQ(SendMessageA(notificationWindow(), WM_DEVICECHANGE, DBT_DEVICEARRIVAL, 0), 0);
    EXPECT_EQ(takeScans(), std::vector<DWORD>{});
    EXPECT_FALSE(logHas("[INFO] HID device connected: 0000000000000001 index=0"));
    end(app);
}

TEST_F(NotificationThread, FailureIsWarnedOfAndTheBridgeGoesOnWithItsScans) {
    UnregisterClassA(className, GetModuleHandleA(nullptr));
    WNDCLASSEXA refusing{};
    refusing.cbSize = sizeof refusing;
    refusing.lpfnWndProc = [](HWND, UINT, WPARAM, LPARAM) -> LRESULT { return 0; };
    refusing.hInstance = GetModuleHandleA(nullptr);
    refusing.lpszClassName = className;
    ASSERT_NE(RegisterClassExA(&refusing), 0);
    {
        host.letSleepsPass();
        App app(platformWithWindow());
        ASSERT_TRUE(app.init(configPath, false, error)) << error;
        EXPECT_TRUE(logHas("[WARN] Failed to register HID device notifications: Failed to create notification window"));
        bus.plug(board);
        EXPECT_TRUE(waitUntil([this] { return logHas("[INFO] HID device connected: 0000000000000001 index=0"); }));
        runAndStop(app);
    }
    EXPECT_TRUE(UnregisterClassA(className, GetModuleHandleA(nullptr)));
}

TEST_F(NotificationThread, IsSetUpAnewByTheNextApplication) {
    for (int round = 0; round < 3; ++round) {
        host.holdSleeps();
        App app(platformWithWindow());
        start(app);
        EXPECT_NE(notificationWindow(), nullptr);
        end(app);
    }
    EXPECT_EQ(notificationWindow(), nullptr);
}

} // namespace
