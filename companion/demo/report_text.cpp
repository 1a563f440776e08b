#include "companion/demo/report_text.h"

#include "hid/hex_text.h"
#include "hid/hid_protocol.h"

namespace {

std::string controlName(const HidEventMap& eventMap, std::uint16_t id) {
    const auto found = eventMap.controlIds.find(id);
    return found == eventMap.controlIds.end() ? std::to_string(id) : found->second;
}

std::string signedText(int number) {
    return (number > 0 ? "+" : "") + std::to_string(number);
}

std::string actionText(const HidProtocol::HidEvent& event, const std::string& name) {
    switch (HidProtocol::classify(event)) {
    case HidProtocol::HidEventAction::ButtonPress:
        return "press " + name;
    case HidProtocol::HidEventAction::ButtonRelease:
        return "release " + name;
    case HidProtocol::HidEventAction::Hold:
        return "hold " + name;
    case HidProtocol::HidEventAction::EncCw:
    case HidProtocol::HidEventAction::EncCcw:
        return "turn " + name + ' ' + signedText(event.value);
    case HidProtocol::HidEventAction::None:
        break;
    }
    if (event.type == HidProtocol::eventTypeBoardNotice) {
        return "notice";
    }
    return "event " + std::to_string(event.type) + ' ' + name + " value=" + std::to_string(event.value);
}

} // namespace

std::string inputReportText(std::span<const std::uint8_t> report, const HidEventMap& eventMap) {
    HidProtocol::HidEvent event;
    std::string error;
    if (report.empty() || !HidProtocol::decodeInputReport(report.data(), report.size(), event, error)) {
        return "raw " + hexText(report);
    }
    std::string text = actionText(event, controlName(eventMap, event.controlId));
    if (event.speed != 0) {
        text += " speed=" + std::to_string(event.speed);
    }
    if (event.mode != 0) {
        text += " mode=" + std::to_string(event.mode);
    }
    return text;
}
