#pragma once

// The parts that systemPlatform() puts together. Each system has its own.

#include "platform/platform.h"

HidTransport systemHidTransport();
SimConnectLibrary systemSimConnectLibrary();
DeviceNotificationSource systemDeviceNotifications();
Host systemHost();
