#pragma once

#include "simulation/boards/virtual_board.h"

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <thread>

/// One plugging of a board: a device of the kernel's HID stack from the constructor, which returns once its hidraw node
/// can be opened, to the destructor.
class UhidDevice {
public:
    /// The board is called on the device's own thread, and no longer once the destructor has returned. Throws
    /// std::runtime_error when the kernel doesn't make the device.
    explicit UhidDevice(VirtualBoard& pluggedBoard);
    ~UhidDevice();
    UhidDevice(const UhidDevice&) = delete;
    UhidDevice& operator=(const UhidDevice&) = delete;

    /// As "/dev/hidraw3".
    const std::string& node() const { return nodePath; }

    /// The resolved sysfs folder of the node.
    const std::string& sysfsFolder() const { return sysfsPath; }

    int featureRequests() const { return featureRequestCount; }

    /// Sends an input report, report id first. Any thread.
    void sendInput(std::span<const std::uint8_t> report) const;

private:
    void findNode();
    void serve();
    void endServing();
    void handleEvent();
    void answerFeature(std::uint32_t requestId, std::uint8_t reportId);

    VirtualBoard& board;
    /// The device's physical location, which no other device has: it identifies its node.
    const std::string location;
    const int device;
    const int wakeUp;
    std::atomic<int> featureRequestCount{0};
    std::string nodePath;
    std::string sysfsPath;
    std::thread server;
};
