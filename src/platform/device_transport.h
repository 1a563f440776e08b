#pragma once

#include "platform/handle_table.h"
#include "platform/platform.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

/// Opens the device at a path for the caller, who owns it. Null when that fails. Any thread may call.
template <typename Device>
using DeviceOpener = std::function<std::unique_ptr<Device>(const std::string& path, HidAccess access, HidMode mode)>;

// The following set a transport's operations. Those share the table and look up the handle at each call, so any thread
// may call them at any time. Without such an open device they fail, and cancelling does nothing.

/// Sets what asks a device about itself.
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

/// A reader that calls `readOnce(Device&, Read&, limit)`. It owns its `Read` but doesn't keep the device open: once the
/// handle is closed, or when `device` is null, every read fails.
template <typename Read, typename Device, typename ReadOnce>
HidReader makeDeviceReader(const std::shared_ptr<Device>& device, ReadOnce readOnce) {
    return
        [opened = std::weak_ptr(device), read = std::make_shared<Read>(), readOnce](std::chrono::milliseconds limit) {
            const auto open = opened.lock();
            return open ? readOnce(*open, *read, limit) : HidReadResult{};
        };
}

/// Sets `makeReader` and `cancelReads`.
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

/// Sets what writes to a device. `noHandle` is the error of a write to a handle that isn't open.
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

/// A transport for a system's own kind of device; `Read` is what its reads write to. The caller adds `enumerate` and
/// `makeSinglePendingReader`. `noHandle` is the system's error code for writing to a handle that isn't open.
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
