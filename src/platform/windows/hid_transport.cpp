#include "platform/device_transport.h"
#include "platform/system_parts.h"
#include "platform/windows/hid_device.h"
#include "platform/windows/hid_enumeration.h"

#include <windows.h>

HidTransport systemHidTransport() {
    HidTransport transport = makeDeviceTransport<HidDevice, HidRead>(HidDevice::open, ERROR_INVALID_HANDLE);
    transport.enumerate = enumerateHidPaths;
    return transport;
}
