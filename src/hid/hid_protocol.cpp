#include "hid/hid_protocol.h"

#include "hid/hex_text.h"

#include <algorithm>

namespace {

constexpr char wrongReportId[] = "Unexpected report ID";

/// A read from which a transport has removed the report id.
constexpr std::size_t sizeWithoutReportId = HidProtocol::reportSize - 1;

std::uint16_t readWord(const std::uint8_t* bytes) {
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

HidProtocol::HidEvent decodePayload(const std::uint8_t* payload) {
    HidProtocol::HidEvent event;
    event.headerByte = payload[0];
    event.type = payload[1];
    // Byte 2 belongs to no field.
    event.controlId = readWord(payload + 3);
    event.value = static_cast<std::int8_t>(payload[5]);
    event.speed = payload[6];
    event.mode = payload[7];
    event.trailerWord = readWord(payload + 8);
    return event;
}

} // namespace

namespace HidProtocol {

bool decodeInputReport(const std::uint8_t* bytes, std::size_t length, HidEvent& event, std::string& error) {
    // First, because such a read has no id to check: its first byte is data and may have any value.
    if (length == sizeWithoutReportId) {
        event = decodePayload(bytes);
        return true;
    }
    if (length < reportSize) {
        error = "Invalid report length";
        return false;
    }
    if (bytes[0] != inputEventReportId) {
        error = wrongReportId;
        return false;
    }
    event = decodePayload(bytes + 1);
    return true;
}

bool decodeDeviceInfo(const Report& bytes, DeviceInfo& info, std::string& error) {
    if (bytes[0] != deviceInfoReportId) {
        error = wrongReportId;
        return false;
    }
    std::copy_n(bytes.begin() + 1, info.infoBytes.size(), info.infoBytes.begin());
    info.infoWord0 = readWord(&bytes[7]);
    info.infoWord1 = readWord(&bytes[9]);
    std::copy_n(bytes.begin() + 11, info.boardId.size(), info.boardId.begin());
    return true;
}

bool decodeProtocolInfo(const Report& bytes, ProtocolInfo& info, std::string& error) {
    if (bytes[0] != protocolInfoReportId) {
        error = wrongReportId;
        return false;
    }
    info = {bytes[1], bytes[2], bytes[3]};
    return true;
}

std::string boardIdText(const DeviceInfo& info) {
    return hexText(info.boardId);
}

Report encodeLedCtl(const LedCommand& command) {
    Report report{};
    report[0] = ledCtlReportId;
    report[1] = command.effect;
    report[2] = command.brightness;
    report[3] = command.count;
    report[4] = static_cast<std::uint8_t>(command.periodMs & 0xFF);
    report[5] = static_cast<std::uint8_t>(command.periodMs >> 8);
    report[6] = command.level;
    return report;
}

Report encodeSimStatus(bool connected) {
    Report report{};
    report[0] = simStatusReportId;
    report[1] = connected ? 1 : 0;
    return report;
}

Report encodeBootsel() {
    Report report{};
    report[0] = deviceCtlReportId;
    report[1] = deviceActionBootsel;
    return report;
}

HidEventAction classify(const HidEvent& event) {
    if (event.type == eventTypeButton) {
        if (isHoldValue(event.value)) {
            return HidEventAction::Hold;
        }
        if (event.value == 1) {
            return HidEventAction::ButtonPress;
        }
        return event.value == 0 ? HidEventAction::ButtonRelease : HidEventAction::None;
    }
    if (event.type == eventTypeEncoder && event.value != 0) {
        return event.value > 0 ? HidEventAction::EncCw : HidEventAction::EncCcw;
    }
    return HidEventAction::None;
}

const char* actionName(HidEventAction action) {
    switch (action) {
    case HidEventAction::ButtonPress:
        return "BUTTON_PRESS";
    case HidEventAction::ButtonRelease:
        return "BUTTON_RELEASE";
    case HidEventAction::Hold:
        return "HOLD";
    case HidEventAction::EncCw:
        return "ENC_CW";
    case HidEventAction::EncCcw:
        return "ENC_CCW";
    case HidEventAction::None:
        break;
    }
    return "NONE";
}

bool isHoldValue(std::int8_t value) {
    return value >= 2 && value <= 4;
}

} // namespace HidProtocol
