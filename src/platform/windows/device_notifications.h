#pragma once

#include "platform/platform.h"

#include <windows.h>

/// Takes what RegisterDeviceNotificationA takes, and like it returns null when it fails.
using RegisterForDevices = std::function<HDEVNOTIFY(HANDLE recipient, void* filter, DWORD flags)>;

/// Notifications through a hidden message-only window, which `registerForDevices` registers with the system.
DeviceNotificationSource windowNotifications(RegisterForDevices registerForDevices);
