#include "platform/linux/hidraw_transport.h"

#include "platform/device_transport.h"
#include "platform/linux/hidraw_device.h"
#include "platform/linux/hidraw_sysfs.h"
#include "platform/system_parts.h"

#include <cerrno>

HidTransport makeHidrawTransport(const std::string& root) {
    const auto openNode = [root](const std::string& path, HidAccess access, HidMode mode) {
        return HidrawDevice::open(root, path, access, mode);
    };
    const auto devices = std::make_shared<HandleTable<HidrawDevice>>();
    HidTransport transport = makeDeviceTransport<HidrawDevice, HidrawReadBuffer>(devices, openNode, EBADF);
    transport.enumerate = [root] { return HidrawSysfs::nodeFolders(root); };
    return transport;
}

HidTransport systemHidTransport() {
    return makeHidrawTransport("/");
}
