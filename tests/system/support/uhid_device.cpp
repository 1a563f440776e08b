#include "tests/system/support/uhid_device.h"

#include "tests/support/wait_until.h"

#include <fcntl.h>
#include <linux/uhid.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace {

std::string nextLocation() {
    static std::atomic<int> counter{0};
    return "system-test/" + std::to_string(getpid()) + "/" + std::to_string(++counter);
}

std::runtime_error failure(const std::string& what) {
    return std::runtime_error("uhid: " + what + ": " + std::generic_category().message(errno));
}

void copyText(std::span<__u8> target, const std::string& text) {
    std::copy_n(text.begin(), std::min(text.size(), target.size() - 1), target.begin());
}

uhid_event createEvent(const UhidIdentity& identity, const std::string& location) {
    uhid_event event{};
    event.type = UHID_CREATE2;
    uhid_create2_req& request = event.u.create2;
    copyText(request.name, identity.name);
    copyText(request.phys, location);
    copyText(request.uniq, identity.serial);
    request.bus = BUS_USB;
    request.vendor = identity.vendorId;
    request.product = identity.productId;
    request.rd_size = static_cast<__u16>(std::min(identity.descriptor.size(), sizeof request.rd_data));
    std::copy_n(identity.descriptor.begin(), request.rd_size, request.rd_data);
    return event;
}

bool writeEvent(int device, const uhid_event& event) {
    return write(device, &event, sizeof event) == static_cast<ssize_t>(sizeof event);
}

bool standsAt(const std::filesystem::path& hidrawFolder, const std::string& location) {
    std::ifstream properties(hidrawFolder / "device" / "uevent");
    for (std::string line; std::getline(properties, line);) {
        if (line == "HID_PHYS=" + location) {
            return true;
        }
    }
    return false;
}

} // namespace

UhidDevice::UhidDevice(const UhidIdentity& identity, UhidHandlers newHandlers)
    : handlers(std::move(newHandlers)), location(nextLocation()), device(open("/dev/uhid", O_RDWR | O_CLOEXEC)) {
    if (device < 0) {
        throw failure("/dev/uhid can't be opened");
    }
    wakeUp = eventfd(0, EFD_CLOEXEC);
    // The kernel asks nothing before it has the device, and may ask before the write returns.
    server = std::thread([this] { serve(); });
    const bool created = writeEvent(device, createEvent(identity, location));
    if (created && waitUntil([this] { return findNode(), !nodePath.empty(); }, std::chrono::seconds(60))) {
        return;
    }
    const std::string reason = failure(created ? "no hidraw node came" : "the device was refused").what();
    endServing();
    throw std::runtime_error(reason);
}

UhidDevice::~UhidDevice() {
    uhid_event event{};
    event.type = UHID_DESTROY;
    // The server still answers here: destroying waits for a request under way.
    writeEvent(device, event);
    endServing();
}

void UhidDevice::endServing() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t woken = write(wakeUp, &one, sizeof one);
    server.join();
    close(device);
    close(wakeUp);
}

void UhidDevice::sendInput(std::span<const std::uint8_t> report) {
    uhid_event event{};
    event.type = UHID_INPUT2;
    event.u.input2.size = static_cast<__u16>(std::min(report.size(), sizeof event.u.input2.data));
    std::copy_n(report.begin(), event.u.input2.size, event.u.input2.data);
    if (!writeEvent(device, event)) {
        throw failure("an input report was refused");
    }
}

void UhidDevice::findNode() {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/sys/class/hidraw", error)) {
        const std::filesystem::path node = std::filesystem::path("/dev") / entry.path().filename();
        if (!standsAt(entry.path(), location) || access(node.c_str(), F_OK) != 0) {
            continue;
        }
        sysfsPath = std::filesystem::canonical(entry.path(), error).string();
        nodePath = node.string();
        return;
    }
}

void UhidDevice::serve() {
    pollfd waits[] = {{device, POLLIN, 0}, {wakeUp, POLLIN, 0}};
    while (poll(waits, 2, -1) >= 0 || errno == EINTR) {
        if ((waits[0].revents & POLLIN) != 0) {
            handleEvent();
        } else if (waits[1].revents != 0) {
            return;
        }
    }
}

void UhidDevice::handleEvent() {
    uhid_event event{};
    if (read(device, &event, sizeof event) <= 0) {
        return;
    }
    switch (event.type) {
    case UHID_OPEN:
        ++openCount;
        break;
    case UHID_OUTPUT:
        handlers.output({event.u.output.data, event.u.output.size}, UhidOutputRoute::Interrupt);
        break;
    case UHID_SET_REPORT:
        handlers.output({event.u.set_report.data, event.u.set_report.size}, UhidOutputRoute::Control);
        acknowledgeSet(event.u.set_report.id);
        break;
    case UHID_GET_REPORT:
        answerFeature(event.u.get_report.id, event.u.get_report.rnum);
        break;
    default:
        break;
    }
}

void UhidDevice::answerFeature(std::uint32_t requestId, std::uint8_t reportId) {
    uhid_event event{};
    event.type = UHID_GET_REPORT_REPLY;
    uhid_get_report_reply_req& reply = event.u.get_report_reply;
    reply.id = requestId;
    const auto answer = handlers.feature(reportId);
    if (answer) {
        reply.size = static_cast<__u16>(std::min(answer->size(), sizeof reply.data));
        std::copy_n(answer->begin(), reply.size, reply.data);
    } else {
        reply.err = EIO;
    }
    writeEvent(device, event);
}

void UhidDevice::acknowledgeSet(std::uint32_t requestId) {
    uhid_event event{};
    event.type = UHID_SET_REPORT_REPLY;
    event.u.set_report_reply.id = requestId;
    writeEvent(device, event);
}
