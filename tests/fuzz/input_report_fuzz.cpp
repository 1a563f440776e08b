// Whatever a board sends: input reports of any length and feature replies.

#include "hid/hid_protocol.h"
#include "tests/fuzz/fuzz_support.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

void checkInputReport(const std::uint8_t* data, std::size_t size) {
    // In memory of its own, so that a read past the end is seen.
    const std::vector<std::uint8_t> bytes(data, data + size);
    HidProtocol::HidEvent event;
    std::string error;
    const bool decoded = HidProtocol::decodeInputReport(bytes.data(), bytes.size(), event, error);
    require(decoded == error.empty(), "a failure has a reason and success has none");
    const bool hasForm = size == 31 || (size >= 32 && bytes[0] == HidProtocol::inputEventReportId);
    require(decoded == hasForm, "a report is known by its length and id");
    require(decoded || event == HidProtocol::HidEvent(), "a failure leaves the event alone");
    const auto action = HidProtocol::classify(event);
    require(!std::string(HidProtocol::actionName(action)).empty(), "an action has a name");
    const bool hasActions = event.type == HidProtocol::eventTypeButton || event.type == HidProtocol::eventTypeEncoder;
    require(hasActions || action == HidProtocol::HidEventAction::None, "other types have no action");
}

void checkFeatureReplies(const std::uint8_t* data, std::size_t size) {
    HidProtocol::Report reply{};
    std::copy_n(data, std::min(size, reply.size()), reply.begin());
    HidProtocol::DeviceInfo device;
    HidProtocol::ProtocolInfo protocol;
    std::string error;
    const bool isDevice = HidProtocol::decodeDeviceInfo(reply, device, error);
    const bool isProtocol = HidProtocol::decodeProtocolInfo(reply, protocol, error);
    require(!error.empty(), "a reply of another id has a reason");
    require(isDevice == (reply[0] == HidProtocol::deviceInfoReportId), "device info has its id");
    require(isProtocol == (reply[0] == HidProtocol::protocolInfoReportId), "protocol info has its id");
    require(HidProtocol::boardIdText(device).size() == 16, "a board id has 16 digits");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        checkInputReport(data, size);
        checkFeatureReplies(data, size);
    }
    return 0;
}
