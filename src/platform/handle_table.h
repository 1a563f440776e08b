#pragma once

#include "platform/platform.h"

#include <map>
#include <memory>
#include <mutex>
#include <utility>

/// The open devices of a transport by their handles. Handles are never given twice, so that one that is used after its
/// closing finds nothing, whatever the system has opened since. A device is destroyed by `remove`, or, when another
/// thread is using it at that moment, as soon as that thread lets go. Any thread may call.
template <typename Device>
class HandleTable {
public:
    HidHandle add(std::shared_ptr<Device> device) {
        const std::lock_guard lock(mutex);
        const HidHandle handle = nextHandle++;
        devices.emplace(handle, std::move(device));
        return handle;
    }

    /// Null when there is none.
    std::shared_ptr<Device> find(HidHandle handle) {
        const std::lock_guard lock(mutex);
        const auto found = devices.find(handle);
        return found == devices.end() ? nullptr : found->second;
    }

    void remove(HidHandle handle) {
        // Taken out under the lock, destroyed outside it, because closing a device may take its time.
        std::shared_ptr<Device> device;
        const std::lock_guard lock(mutex);
        const auto found = devices.find(handle);
        if (found != devices.end()) {
            device = std::move(found->second);
            devices.erase(found);
        }
    }

private:
    std::mutex mutex;
    HidHandle nextHandle = 1;
    std::map<HidHandle, std::shared_ptr<Device>> devices;
};
