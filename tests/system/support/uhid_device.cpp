#include "tests/system/support/uhid_device.h"

#include "tests/support/wait_until.h"

#include <fcntl.h>
#include <linux/uhid.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace {

// Six reports of 31 bytes behind their ids, as the boards' own descriptor has them.
const std::vector<std::uint8_t> reportDescriptor = {
    0x06, 0x00, 0xFF,                   // usage page: vendor
    0x09, 0x01,                         // usage 1
    0xA1, 0x01,                         // application collection
    0x15, 0x00,                         // values from 0
    0x26, 0xFF, 0x00,                   // to 255
    0x75, 0x08,                         // of 8 bits
    0x95, 0x1F,                         // 31 of them in each report
    0x85, 0x01, 0x09, 0x01, 0x81, 0x02, // input event
    0x85, 0x10, 0x09, 0x10, 0x91, 0x02, // LED control
    0x85, 0x11, 0x09, 0x11, 0x91, 0x02, // sim status
    0x85, 0x12, 0x09, 0x12, 0x91, 0x02, // device control
    0x85, 0x20, 0x09, 0x20, 0xB1, 0x02, // device info
    0x85, 0x21, 0x09, 0x21, 0xB1, 0x02, // protocol info
    0xC0,
};

std::string nextLocation() {
    static std::atomic<int> counter{0};
    return "system-test/" + std::to_string(getpid()) + "/" + std::to_string(++counter);
}

std::runtime_error failure(const std::string& what) {
    return std::runtime_error("uhid: " + what + ": " + std::generic_category().message(errno));
}

uhid_event eventOf(std::uint32_t type) {
    uhid_event event{};
    event.type = type;
    return event;
}

/// Fills the beginning of a field of `room` bytes, as far as they go; returns their number.
template <typename Bytes>
std::uint16_t fill(__u8* field, std::size_t room, const Bytes& bytes) {
    const std::size_t size = std::min(bytes.size(), room);
    std::copy_n(bytes.begin(), size, field);
    return static_cast<std::uint16_t>(size);
}

uhid_event createEvent(const VirtualBoardModel& model, const std::string& location) {
    uhid_event event = eventOf(UHID_CREATE2);
    uhid_create2_req& request = event.u.create2;
    fill(request.name, sizeof request.name, std::string("Cockpit panel"));
    fill(request.phys, sizeof request.phys, location);
    fill(request.uniq, sizeof request.uniq, model.serial.value_or(""));
    request.bus = BUS_USB;
    request.vendor = model.vendorId;
    request.product = model.productId;
    request.rd_size = fill(request.rd_data, sizeof request.rd_data, reportDescriptor);
    return event;
}

bool writeEvent(int device, const uhid_event& event) {
    return write(device, &event, sizeof event) == static_cast<ssize_t>(sizeof event);
}

bool isAt(const std::filesystem::path& hidrawFolder, const std::string& location) {
    std::ifstream properties(hidrawFolder / "device" / "uevent");
    for (std::string line; std::getline(properties, line);) {
        if (line == "HID_PHYS=" + location) {
            return true;
        }
    }
    return false;
}

} // namespace

UhidDevice::UhidDevice(VirtualBoard& pluggedBoard)
    : board(pluggedBoard),
      location(nextLocation()),
      device(open("/dev/uhid", O_RDWR | O_CLOEXEC)),
      wakeUp(eventfd(0, EFD_CLOEXEC)) {
    // The kernel asks nothing before it has the device, and may ask before the write returns.
    server = std::thread([this] { serve(); });
    const bool created = writeEvent(device, createEvent(board.model(), location));
    if (created && waitUntil([this] { return findNode(), !nodePath.empty(); }, std::chrono::seconds(60))) {
        return;
    }
    const std::string reason = failure(created ? "no hidraw node came" : "the device was refused").what();
    endServing();
    throw std::runtime_error(reason);
}

UhidDevice::~UhidDevice() {
    // The server still answers here: destroying waits for a request under way.
    writeEvent(device, eventOf(UHID_DESTROY));
    endServing();
}

void UhidDevice::endServing() {
    eventfd_write(wakeUp, 1);
    server.join();
    close(device);
    close(wakeUp);
}

void UhidDevice::sendInput(std::span<const std::uint8_t> report) const {
    uhid_event event = eventOf(UHID_INPUT2);
    event.u.input2.size = fill(event.u.input2.data, sizeof event.u.input2.data, report);
    if (!writeEvent(device, event)) {
        throw failure("an input report was refused");
    }
}

void UhidDevice::findNode() {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/sys/class/hidraw", error)) {
        const std::filesystem::path node = "/dev" / entry.path().filename();
        if (isAt(entry.path(), location) && access(node.c_str(), F_OK) == 0) {
            sysfsPath = std::filesystem::canonical(entry.path(), error).string();
            nodePath = node.string();
            return;
        }
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
    if (event.type == UHID_OUTPUT) {
        // The kernel sends output reports this way for each of a program's calls.
        board.receiveOutput(OutputCall::Write, {event.u.output.data, event.u.output.size});
    } else if (event.type == UHID_GET_REPORT) {
        answerFeature(event.u.get_report.id, event.u.get_report.rnum);
    }
}

void UhidDevice::answerFeature(std::uint32_t requestId, std::uint8_t reportId) {
    ++featureRequestCount;
    uhid_event event = eventOf(UHID_GET_REPORT_REPLY);
    uhid_get_report_reply_req& reply = event.u.get_report_reply;
    reply.id = requestId;
    if (const auto answer = board.featureReply(reportId)) {
        reply.size = fill(reply.data, sizeof reply.data, *answer);
    } else {
        reply.err = EIO;
    }
    writeEvent(device, event);
}
