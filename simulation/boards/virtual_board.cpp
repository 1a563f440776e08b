#include "simulation/boards/virtual_board.h"

#include <algorithm>
#include <utility>

namespace {

std::uint8_t lowByte(std::uint16_t word) {
    return static_cast<std::uint8_t>(word & 0xFF);
}

std::uint8_t highByte(std::uint16_t word) {
    return static_cast<std::uint8_t>(word >> 8);
}

std::uint16_t wordAt(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return static_cast<std::uint16_t>(bytes[offset] | bytes[offset + 1] << 8);
}

HidProtocol::Report deviceInfoReply(const VirtualBoardModel& model) {
    HidProtocol::Report report{};
    report[0] = HidProtocol::deviceInfoReportId;
    std::copy(model.infoBytes.begin(), model.infoBytes.end(), report.begin() + 1);
    report[7] = lowByte(model.infoWord0);
    report[8] = highByte(model.infoWord0);
    report[9] = lowByte(model.infoWord1);
    report[10] = highByte(model.infoWord1);
    std::copy(model.boardId->begin(), model.boardId->end(), report.begin() + 11);
    return report;
}

HidProtocol::Report protocolInfoReply(const HidProtocol::ProtocolInfo& info) {
    HidProtocol::Report report{};
    report[0] = HidProtocol::protocolInfoReportId;
    report[1] = info.protocolMajor;
    report[2] = info.protocolMinor;
    report[3] = info.protocolFlags;
    return report;
}

HidProtocol::HidEvent inputEvent(std::uint8_t type, std::uint16_t controlId, std::int8_t value, std::uint8_t mode) {
    HidProtocol::HidEvent event;
    event.type = type;
    event.controlId = controlId;
    event.value = value;
    event.mode = mode;
    return event;
}

} // namespace

LedCommand ledCommandOf(std::span<const std::uint8_t> report) {
    return {report[1], report[2], report[3], wordAt(report, 4), report[6]};
}

HidProtocol::Report inputReport(const HidProtocol::HidEvent& event) {
    HidProtocol::Report report{};
    report[0] = HidProtocol::inputEventReportId;
    report[1] = event.headerByte;
    report[2] = event.type;
    report[4] = lowByte(event.controlId);
    report[5] = highByte(event.controlId);
    report[6] = static_cast<std::uint8_t>(event.value);
    report[7] = event.speed;
    report[8] = event.mode;
    report[9] = lowByte(event.trailerWord);
    report[10] = highByte(event.trailerWord);
    return report;
}

VirtualBoard::VirtualBoard(const VirtualBoardModel& model) : made(model) {}

const VirtualBoardModel& VirtualBoard::model() const {
    return made;
}

void VirtualBoard::press(std::uint16_t controlId, std::uint8_t mode) {
    sendEvent(inputEvent(HidProtocol::eventTypeButton, controlId, 1, mode));
}

void VirtualBoard::hold(std::uint16_t controlId, std::uint8_t mode, std::int8_t value) {
    sendEvent(inputEvent(HidProtocol::eventTypeButton, controlId, value, mode));
}

void VirtualBoard::release(std::uint16_t controlId, std::uint8_t mode) {
    sendEvent(inputEvent(HidProtocol::eventTypeButton, controlId, 0, mode));
}

void VirtualBoard::turn(std::uint16_t controlId, std::int8_t detents, std::uint8_t speed, std::uint8_t mode) {
    auto event = inputEvent(HidProtocol::eventTypeEncoder, controlId, detents, mode);
    event.speed = speed;
    sendEvent(event);
}

void VirtualBoard::notice() {
    sendEvent(inputEvent(HidProtocol::eventTypeBoardNotice, 0, 0, 0));
}

void VirtualBoard::sendEvent(const HidProtocol::HidEvent& event) {
    sendRaw(inputReport(event));
}

void VirtualBoard::sendRaw(std::span<const std::uint8_t> report) {
    InputSink sink;
    {
        const std::lock_guard lock(mutex);
        sink = inputSink;
    }
    if (sink) {
        sink(report);
    }
}

std::optional<LedCommand> VirtualBoard::led() const {
    const std::lock_guard lock(mutex);
    return ledState;
}

std::optional<bool> VirtualBoard::simConnected() const {
    const std::lock_guard lock(mutex);
    return simState;
}

bool VirtualBoard::inBootsel() const {
    const std::lock_guard lock(mutex);
    return bootsel;
}

std::vector<BoardOutput> VirtualBoard::outputs() const {
    const std::lock_guard lock(mutex);
    return received;
}

void VirtualBoard::clearOutputs() {
    const std::lock_guard lock(mutex);
    received.clear();
}

void VirtualBoard::setOutputCallback(OutputCallback callback) {
    const std::lock_guard lock(mutex);
    outputCallback = std::move(callback);
}

void VirtualBoard::powerOn(InputSink sink) {
    const std::lock_guard lock(mutex);
    inputSink = std::move(sink);
    ledState.reset();
    simState.reset();
    bootsel = false;
}

void VirtualBoard::powerOff() {
    const std::lock_guard lock(mutex);
    inputSink = nullptr;
}

std::optional<HidProtocol::Report> VirtualBoard::featureReply(std::uint8_t reportId) const {
    if (reportId == HidProtocol::deviceInfoReportId && made.boardId) {
        return deviceInfoReply(made);
    }
    if (reportId == HidProtocol::protocolInfoReportId && made.protocolInfo) {
        return protocolInfoReply(*made.protocolInfo);
    }
    return std::nullopt;
}

void VirtualBoard::receiveOutput(OutputCall call, std::span<const std::uint8_t> bytes) {
    const BoardOutput output{call, {bytes.begin(), bytes.end()}};
    OutputCallback callback;
    {
        const std::lock_guard lock(mutex);
        received.push_back(output);
        applyOutput(bytes);
        callback = outputCallback;
    }
    if (callback) {
        callback(output);
    }
}

void VirtualBoard::applyOutput(std::span<const std::uint8_t> bytes) {
    if (bytes.size() != HidProtocol::reportSize) {
        return;
    }
    switch (bytes[0]) {
    case HidProtocol::ledCtlReportId:
        ledState = ledCommandOf(bytes);
        break;
    case HidProtocol::simStatusReportId:
        simState = bytes[1] != 0;
        break;
    case HidProtocol::deviceCtlReportId:
        bootsel = bootsel || bytes[1] == HidProtocol::deviceActionBootsel;
        break;
    default:
        break;
    }
}
