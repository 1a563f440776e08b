#pragma once

#include "platform/handle_table.h"
#include "platform/platform.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

template <typename Device>
using DeviceOpener = std::function<std::unique_ptr<Device>(const std::string& path, HidAccess access, HidMode mode)>;

template <typename Device>
void fillQueries(HidTransport& transport, const std::shared_ptr<HandleTable<Device>>& devices) {
    transport.attributes = [devices](HidHandle handle, HidAttributes& attributes) {
        const auto device = devices->find(handle);
        return device && device->attributes(attributes);
    };
    transport.serialNumber = [devices](HidHandle handle, std::string& serial) {
        const auto device = devices->find(handle);
        return device && device->serialNumber(serial);
    };
    transport.getFeature = [devices](HidHandle handle, std::span<std::uint8_t> report) {
        const auto device = devices->find(handle);
        return device && device->getFeature(report);
    };
}

/// A reader that reads by `readOnce(Device&, Read&, limit)`. It doesn't keep the device open: closing the handle closes
/// it.
template <typename Read, typename Device, typename ReadOnce>
HidReader makeDeviceReader(const std::shared_ptr<Device>& device, ReadOnce readOnce) {
    return
        [opened = std::weak_ptr(device), read = std::make_shared<Read>(), readOnce](std::chrono::milliseconds limit) {
            const auto open = opened.lock();
            return open ? readOnce(*open, *read, limit) : HidReadResult{};
        };
}

template <typename Device, typename Read>
void fillReads(HidTransport& transport, const std::shared_ptr<HandleTable<Device>>& devices) {
    transport.makeReader = [devices](HidHandle handle) {
        return makeDeviceReader<Read>(
            devices->find(handle),
            [](Device& device, Read& read, std::chrono::milliseconds limit) { return device.read(read, limit); });
    };
    transport.cancelReads = [devices](HidHandle handle) {
        if (const auto device = devices->find(handle)) {
            device->cancelReads();
        }
    };
}

template <typename Device>
void fillWrites(HidTransport& transport, const std::shared_ptr<HandleTable<Device>>& devices, std::uint32_t noHandle) {
    const HidWriteResult notOpen{.ok = false, .count = 0, .error = noHandle};
    transport.write = [devices, notOpen](HidHandle handle, std::span<const std::uint8_t> report) {
        const auto device = devices->find(handle);
        return device ? device->write(report) : notOpen;
    };
    transport.setOutputReport = [devices, notOpen](HidHandle handle, std::span<const std::uint8_t> report) {
        const auto device = devices->find(handle);
        return device ? device->setOutputReport(report) : notOpen;
    };
}

/// A transport, but for `enumerate` and `makeSinglePendingReader`, on a system's own kind of device and of what its
/// reads write to (`Read`). `noHandle` is the system's error code for writing to a handle that isn't open.
template <typename Device, typename Read>
HidTransport makeDeviceTransport(const std::shared_ptr<HandleTable<Device>>& devices, DeviceOpener<Device> openDevice,
                                 std::uint32_t noHandle) {
    HidTransport transport;
    transport.open = [devices, openDevice = std::move(openDevice)](const std::string& path, HidAccess access,
                                                                   HidMode mode) {
        std::unique_ptr<Device> device = openDevice(path, access, mode);
        return device ? devices->add(std::move(device)) : invalidHidHandle;
    };
    transport.close = [devices](HidHandle handle) { devices->remove(handle); };
    fillQueries(transport, devices);
    fillReads<Device, Read>(transport, devices);
    fillWrites(transport, devices, noHandle);
    return transport;
}
