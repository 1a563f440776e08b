// Whatever a board sends: input reports of any length and feature replies.

#include "hid/hid_protocol.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void checkInputReport(const std::uint8_t* data, std::size_t size) {
    // In memory of its own, so that a read past the end is seen.
    const std::vector<std::uint8_t> bytes(data, data + size);
    HidProtocol::HidEvent event;
    std::string error;
    const bool decoded = HidProtocol::decodeInputReport(bytes.data(), bytes.size(), event, error);
    require(decoded == error.empty());
    require(decoded == (size == 31 || (size >= 32 && bytes[0] == HidProtocol::inputEventReportId)));
    require(decoded || event == HidProtocol::HidEvent());
    const auto action = HidProtocol::classify(event);
    require(!std::string(HidProtocol::actionName(action)).empty());
    require(action == HidProtocol::HidEventAction::None || event.type == HidProtocol::eventTypeButton ||
            event.type == HidProtocol::eventTypeEncoder);
}

void checkFeatureReplies(const std::uint8_t* data, std::size_t size) {
    HidProtocol::Report reply{};
    std::copy_n(data, std::min(size, reply.size()), reply.begin());
    HidProtocol::DeviceInfo device;
    HidProtocol::ProtocolInfo protocol;
    std::string error;
    const bool isDevice = HidProtocol::decodeDeviceInfo(reply, device, error);
    const bool isProtocol = HidProtocol::decodeProtocolInfo(reply, protocol, error);
    require(!error.empty());
    require(isDevice == (reply[0] == HidProtocol::deviceInfoReportId));
    require(isProtocol == (reply[0] == HidProtocol::protocolInfoReportId));
    require(HidProtocol::boardIdText(device).size() == 16);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        checkInputReport(data, size);
        checkFeatureReplies(data, size);
    }
    return 0;
}
