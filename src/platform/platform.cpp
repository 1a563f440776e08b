#include "platform/platform.h"

#include "platform/system_parts.h"

Platform systemPlatform() {
    Platform platform;
    platform.hid = systemHidTransport();
    platform.simConnect = systemSimConnectLibrary();
    platform.deviceNotifications = systemDeviceNotifications();
    platform.host = systemHost();
    return platform;
}
