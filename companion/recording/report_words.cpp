#include "companion/recording/report_words.h"

#include "hid/hex_text.h"
#include "hid/hid_protocol.h"

using HidProtocol::HidEvent;

namespace {

std::string option(const char* name, int value, int usual = 0) {
    return value == usual ? "" : std::string(" ") + name + '=' + std::to_string(value);
}

std::string verb(const HidEvent& event, const std::string& control) {
    if (event.type == HidProtocol::eventTypeEncoder) {
        return "turn " + control + (event.value > 0 ? " +" : " ") + std::to_string(event.value);
    }
    if (event.type == HidProtocol::eventTypeButton && (event.value == 0 || event.value == 1)) {
        return (event.value == 1 ? "press " : "release ") + control;
    }
    if (event.type == HidProtocol::eventTypeButton && HidProtocol::isHoldValue(event.value)) {
        constexpr int usualHold = 2;
        return "hold " + control + option("value", event.value, usualHold);
    }
    if (event.type == HidProtocol::eventTypeBoardNotice && event.controlId == 0) {
        return "notice" + option("value", event.value);
    }
    return "event " + std::to_string(event.type) + ' ' + control + option("value", event.value);
}

} // namespace

std::string reportWords(std::span<const std::uint8_t> report,
                        const std::function<std::string(std::uint16_t number)>& controlName) {
    HidEvent event;
    std::string ignored;
    if (!HidProtocol::decodeInputReport(report.data(), report.size(), event, ignored)) {
        return "raw " + hexText(report);
    }
    return verb(event, controlName(event.controlId)) + option("speed", event.speed) + option("mode", event.mode);
}
