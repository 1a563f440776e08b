#include "platform/windows/device_notifications.h"

#include "platform/system_parts.h"
#include "platform/windows/hid_api.h"

#include <dbt.h>

#include <memory>
#include <utility>

namespace {

constexpr char className[] = "VantrelBridgeHidNotify";
constexpr char windowTitle[] = "Vantrel HID Notify";

/// A hidden window that the system notifies about HID device interfaces. Everything except `requestEnd` runs on the
/// window's thread.
class NotificationWindow {
public:
    explicit NotificationWindow(RegisterForDevices registerForDevices)
        : registerForDevices(std::move(registerForDevices)) {}

    bool setUp(std::string& error);
    void run(const std::function<void()>& onDeviceChange);
    void tearDown();
    void requestEnd() const { PostThreadMessageA(threadId, WM_QUIT, 0, 0); }

private:
    const RegisterForDevices registerForDevices;
    DWORD threadId = 0;
    HWND window = nullptr;
    HDEVNOTIFY registration = nullptr;
    const std::function<void()>* onChange = nullptr;

    bool registerWindow();
    void handleDeviceChange(WPARAM event, LPARAM data) const;
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
};

bool NotificationWindow::setUp(std::string& error) {
    threadId = GetCurrentThreadId();
    WNDCLASSEXA windowClass{};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleA(nullptr);
    windowClass.lpszClassName = className;
    // The class may be there already from an earlier set-up.
    RegisterClassExA(&windowClass);
    window =
        CreateWindowExA(0, className, windowTitle, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, windowClass.hInstance, this);
    if (window == nullptr) {
        error = "Failed to create notification window";
        return false;
    }
    if (!registerWindow()) {
        error = "RegisterDeviceNotification failed";
        tearDown();
        return false;
    }
    return true;
}

bool NotificationWindow::registerWindow() {
    DEV_BROADCAST_DEVICEINTERFACE_A filter{};
    static_assert(sizeof filter == 32);
    filter.dbcc_size = sizeof filter;
    filter.dbcc_devicetype = DBT_DEVTYP_DEVICEINTERFACE;
    HidD_GetHidGuid(&filter.dbcc_classguid);
    registration = registerForDevices(window, &filter, DEVICE_NOTIFY_WINDOW_HANDLE);
    return registration != nullptr;
}

void NotificationWindow::run(const std::function<void()>& onDeviceChange) {
    onChange = &onDeviceChange;
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    onChange = nullptr;
}

void NotificationWindow::tearDown() {
    if (registration != nullptr) {
        UnregisterDeviceNotification(registration);
        registration = nullptr;
    }
    if (window != nullptr) {
        DestroyWindow(window);
        window = nullptr;
    }
}

void NotificationWindow::handleDeviceChange(WPARAM event, LPARAM data) const {
    if ((event != DBT_DEVICEARRIVAL && event != DBT_DEVICEREMOVECOMPLETE) || data == 0) {
        return;
    }
    const auto* header = reinterpret_cast<const DEV_BROADCAST_HDR*>(data);
    if (header->dbch_devicetype == DBT_DEVTYP_DEVICEINTERFACE && onChange != nullptr) {
        (*onChange)();
    }
}

LRESULT CALLBACK NotificationWindow::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        const auto* creation = reinterpret_cast<const CREATESTRUCTA*>(lParam);
        if (creation->lpCreateParams != nullptr) {
            SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
        }
    }
    if (message == WM_DEVICECHANGE) {
        const auto* self = reinterpret_cast<const NotificationWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA));
        if (self != nullptr) {
            self->handleDeviceChange(wParam, lParam);
        }
        return 0;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

} // namespace

DeviceNotificationSource windowNotifications(RegisterForDevices registerForDevices) {
    const auto window = std::make_shared<NotificationWindow>(std::move(registerForDevices));
    DeviceNotificationSource source;
    source.setUp = [window](std::string& error) { return window->setUp(error); };
    source.run = [window](const std::function<void()>& onChange) { window->run(onChange); };
    source.tearDown = [window] { window->tearDown(); };
    source.requestEnd = [window] { window->requestEnd(); };
    return source;
}

DeviceNotificationSource systemDeviceNotifications() {
    return windowNotifications(RegisterDeviceNotificationA);
}
