#include "tests/bench/socket_board.h"

#include "hid/hid_protocol.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <memory>

namespace {

/// The wait and read of one report, as the hidraw transport does them.
HidReadResult readReport(int reportSocket, int cancelEvent, HidProtocol::Report& buffer,
                         std::chrono::milliseconds limit) {
    std::array<pollfd, 2> waits{{{reportSocket, POLLIN, 0}, {cancelEvent, POLLIN, 0}}};
    const int ready = poll(waits.data(), waits.size(), static_cast<int>(limit.count()));
    if (ready == 0) {
        return {HidReadStatus::Timeout, {}};
    }
    if (ready < 0 || waits[1].revents != 0) {
        return {};
    }
    const ssize_t count = read(reportSocket, buffer.data(), buffer.size());
    if (count <= 0) {
        return {};
    }
    return {HidReadStatus::Data, std::span(buffer).first(static_cast<std::size_t>(count))};
}

} // namespace

HidTransport socketBoardTransport(int reportSocket) {
    const auto lastHandle = std::make_shared<std::atomic<HidHandle>>(0);
    const int cancelEvent = eventfd(0, EFD_CLOEXEC);
    HidTransport transport;
    transport.enumerate = [] { return std::vector<std::string>{"socket-board"}; };
    transport.open = [lastHandle](const std::string&, HidAccess, HidMode) { return ++*lastHandle; };
    transport.close = [](HidHandle) {};
    transport.attributes = [](HidHandle, HidAttributes& attributes) {
        attributes = {0x1234, 0xABCD};
        return true;
    };
    transport.serialNumber = [](HidHandle, std::string& serial) {
        serial = "E66138A1B2C3D4E5";
        return true;
    };
    transport.getFeature = [](HidHandle, std::span<std::uint8_t>) { return false; };
    transport.makeReader = [reportSocket, cancelEvent](HidHandle) {
        return [reportSocket, cancelEvent, buffer = HidProtocol::Report{}](std::chrono::milliseconds limit) mutable {
            return readReport(reportSocket, cancelEvent, buffer, limit);
        };
    };
    transport.cancelReads = [cancelEvent](HidHandle) { eventfd_write(cancelEvent, 1); };
    transport.write = [](HidHandle, std::span<const std::uint8_t> report) {
        return HidWriteResult{true, static_cast<std::uint32_t>(report.size()), 0};
    };
    transport.setOutputReport = transport.write;
    return transport;
}
