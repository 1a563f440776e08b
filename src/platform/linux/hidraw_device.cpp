#include "platform/linux/hidraw_device.h"

#include "platform/linux/hidraw_sysfs.h"

#include <fcntl.h>
#include <linux/hidraw.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

namespace {

int openFlags(HidAccess access, HidMode mode) {
    int flags = O_CLOEXEC | O_NOCTTY;
    flags |= access == HidAccess::ReadWrite ? O_RDWR : O_RDONLY;
    flags |= mode == HidMode::Overlapped ? O_NONBLOCK : 0;
    return flags;
}

/// Between the listing and the opening, the board may have been replugged and another may have the node's number. The
/// kernel never uses the folder's name again: if the folder still has that number after the opening, it had it all the
/// time.
bool belongsTo(const FileDescriptor& node, const std::string& nodeFolder) {
    struct stat status {};
    return fstat(node.get(), &status) == 0 && S_ISCHR(status.st_mode) &&
           HidrawSysfs::hasDeviceNumber(nodeFolder, status.st_rdev);
}

int remainingMs(std::chrono::steady_clock::time_point deadline) {
    const auto remaining =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(remaining, 0));
}

HidWriteResult lastFailure() {
    return {.ok = false, .count = 0, .error = static_cast<std::uint32_t>(errno)};
}

} // namespace

std::unique_ptr<HidrawDevice> HidrawDevice::open(const std::string& root, const std::string& nodeFolder,
                                                 HidAccess access, HidMode mode) {
    auto device = std::make_unique<HidrawDevice>();
    device->folder = nodeFolder;
    const std::string path = HidrawSysfs::deviceNode(root, nodeFolder);
    device->node = FileDescriptor(uninterrupted([&] { return ::open(path.c_str(), openFlags(access, mode)); }));
    const bool usable = device->node.isOpen() && belongsTo(device->node, nodeFolder) && device->cancelled.open();
    return usable ? std::move(device) : nullptr;
}

bool HidrawDevice::attributes(HidAttributes& attributes) const {
    hidraw_devinfo info{};
    if (ioctl(node.get(), HIDIOCGRAWINFO, &info) < 0) {
        return false;
    }
    attributes.vendorId = static_cast<std::uint16_t>(info.vendor);
    attributes.productId = static_cast<std::uint16_t>(info.product);
    return true;
}

bool HidrawDevice::serialNumber(std::string& serial) const {
    std::array<char, 256> text{};
    // Kernels before 5.6 don't answer this, but have the text in sysfs.
    const bool known = ioctl(node.get(), HIDIOCGRAWUNIQ(text.size() - 1), text.data()) >= 0;
    const std::string found = known ? std::string(text.data()) : HidrawSysfs::serialNumber(folder);
    if (found.empty()) {
        return false;
    }
    serial = found;
    return true;
}

bool HidrawDevice::getFeature(std::span<std::uint8_t> report) const {
    return uninterrupted([&] { return ioctl(node.get(), HIDIOCGFEATURE(report.size()), report.data()); }) >= 0;
}

HidReadResult HidrawDevice::read(HidrawReadBuffer& buffer, std::chrono::milliseconds limit) const {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (true) {
        const Wait outcome = waitForReport(deadline);
        if (outcome == Wait::Timeout || outcome == Wait::Failure) {
            return {outcome == Wait::Timeout ? HidReadStatus::Timeout : HidReadStatus::Failure, {}};
        }
        const auto count = uninterrupted([&] { return ::read(node.get(), buffer.data(), buffer.size()); });
        // What a board sent before it was pulled can still be read.
        if (count > 0 || (count == 0 && outcome == Wait::Readable)) {
            return {HidReadStatus::Data, std::span(buffer).first(static_cast<std::size_t>(count))};
        }
        if (outcome == Wait::HungUp || errno != EAGAIN) {
            return {HidReadStatus::Failure, {}};
        }
    }
}

HidrawDevice::Wait HidrawDevice::waitForReport(std::chrono::steady_clock::time_point deadline) const {
    std::array<pollfd, 2> waited{{{node.get(), POLLIN, 0}, {cancelled.pollable(), POLLIN, 0}}};
    const int ready = uninterrupted([&] { return poll(waited.data(), waited.size(), remainingMs(deadline)); });
    if (ready == 0) {
        return Wait::Timeout;
    }
    if (ready < 0 || waited[1].revents != 0) {
        return Wait::Failure;
    }
    return waited[0].revents == POLLIN ? Wait::Readable : Wait::HungUp;
}

void HidrawDevice::cancelReads() const {
    cancelled.signal();
}

HidWriteResult HidrawDevice::write(std::span<const std::uint8_t> report) const {
    const auto count = uninterrupted([&] { return ::write(node.get(), report.data(), report.size()); });
    if (count < 0) {
        return lastFailure();
    }
    return {.ok = true, .count = static_cast<std::uint32_t>(count), .error = 0};
}

HidWriteResult HidrawDevice::setOutputReport([[maybe_unused]] std::span<const std::uint8_t> report) const {
#ifdef HIDIOCSOUTPUT
    const bool sent =
        uninterrupted([&] { return ioctl(node.get(), HIDIOCSOUTPUT(report.size()), report.data()); }) >= 0;
#else
    errno = ENOTTY;
    const bool sent = false;
#endif
    return sent ? HidWriteResult{.ok = true, .count = 0, .error = 0} : lastFailure();
}
