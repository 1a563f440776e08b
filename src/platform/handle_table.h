#pragma once

#include "platform/platform.h"

#include <map>
#include <memory>
#include <mutex>
#include <utility>

/// The open devices of a transport by their handles. No handle is given twice, so a closed handle finds nothing, even
/// if the system has opened other devices since. `remove` destroys a device; if another thread is using it at that
/// moment, that thread destroys it when it is done. Any thread may call.
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
        // Taken out under the lock but destroyed outside it, because closing a device may be slow.
        std::shared_ptr<Device> device;
        const std::lock_guard lock(mutex);
        const auto found = devices.find(handle);
        if (found != devices.end()) {
            device = std::move(found->second);
            devices.erase(found);
        }
    }

private:
    // Guards the members below. Nothing is called under it, not even a device's destructor.
    std::mutex mutex;
    HidHandle nextHandle = 1;
    std::map<HidHandle, std::shared_ptr<Device>> devices;
};
