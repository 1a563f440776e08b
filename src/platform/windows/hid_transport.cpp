#include "platform/device_transport.h"
#include "platform/system_parts.h"
#include "platform/windows/hid_device.h"
#include "platform/windows/hid_enumeration.h"

#include <windows.h>

HidTransport systemHidTransport() {
    const auto devices = std::make_shared<HandleTable<HidDevice>>();
    HidTransport transport = makeDeviceTransport<HidDevice, HidRead>(devices, HidDevice::open, ERROR_INVALID_HANDLE);
    transport.enumerate = enumerateHidPaths;
    transport.makeSinglePendingReader = [devices](HidHandle handle) {
        const auto device = devices->find(handle);
        if (device) {
            device->keepMoreReports();
        }
        return makeDeviceReader<HidRead>(device, [](HidDevice& open, HidRead& read, std::chrono::milliseconds limit) {
            return open.readSinglePending(read, limit);
        });
    };
    return transport;
}
