#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

/// What the kernel is told of a device at its creation.
struct UhidIdentity {
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;
    /// Empty for a device without a serial number.
    std::string serial;
    std::string name;
    std::vector<std::uint8_t> descriptor;
};

enum class UhidOutputRoute { Interrupt, Control };

/// The device's side of its reports, report id first. Called on the device's own thread, except that nothing is called
/// after the destructor has returned.
struct UhidHandlers {
    /// The answer to a feature request; none refuses it with an I/O error.
    std::function<std::optional<std::vector<std::uint8_t>>(std::uint8_t reportId)> feature;
    std::function<void(std::span<const std::uint8_t> report, UhidOutputRoute route)> output;
};

/// One HID device that lives in this process and that the kernel takes for real: it exists from the constructor, which
/// returns once its hidraw node can be opened, to the destructor, which is an unplug.
class UhidDevice {
public:
    /// Throws std::runtime_error when the kernel doesn't make the device.
    UhidDevice(const UhidIdentity& identity, UhidHandlers newHandlers);
    ~UhidDevice();
    UhidDevice(const UhidDevice&) = delete;
    UhidDevice& operator=(const UhidDevice&) = delete;

    /// As "/dev/hidraw3".
    const std::string& node() const { return nodePath; }

    /// The resolved sysfs folder of the node.
    const std::string& sysfsFolder() const { return sysfsPath; }

    /// Sends an input report, report id first. Any thread.
    void sendInput(std::span<const std::uint8_t> report);

    /// How often the kernel has opened the device for a first reader; while others hold it open none is counted.
    int opens() const { return openCount; }

private:
    void findNode();
    void serve();
    void endServing();
    void handleEvent();
    void answerFeature(std::uint32_t requestId, std::uint8_t reportId);
    void acknowledgeSet(std::uint32_t requestId);

    const UhidHandlers handlers;
    /// The device's physical location, which no other device has: by it its node is found.
    const std::string location;
    int device = -1;
    int wakeUp = -1;
    std::atomic<int> openCount{0};
    std::string nodePath;
    std::string sysfsPath;
    std::thread server;
};
