#include "simulation/rig/stream_texts.h"

#include "hid/hex_text.h"

namespace {

/// What the bridge puts in front of each command's own text.
constexpr std::string_view commandPrefix = "1 ";

std::string patternText(const char* name, const LedCommand& command) {
    return name + (" count=" + std::to_string(command.count)) + " period=" + std::to_string(command.periodMs) +
           " level=" + std::to_string(command.level);
}

std::string executedText(const std::string& code) {
    return code.starts_with(commandPrefix) ? "rpn " + code.substr(commandPrefix.size()) : "code " + code;
}

} // namespace

std::string ledText(const LedCommand& command) {
    switch (command.effect) {
    case 0:
        return "none";
    case 1:
        return "steady " + std::to_string(command.brightness);
    case 2:
        return patternText("breathe", command);
    case 3:
        return patternText("flash", command);
    default:
        return "effect " + std::to_string(command.effect);
    }
}

std::string outputText(const BoardOutput& output) {
    const std::vector<std::uint8_t>& bytes = output.bytes;
    if (bytes.size() < HidProtocol::reportSize) {
        return "output " + hexText(bytes);
    }
    switch (bytes[0]) {
    case HidProtocol::ledCtlReportId:
        return "led " + ledText(ledCommandOf(bytes));
    case HidProtocol::simStatusReportId:
        return bytes[1] == 0 ? "status disconnected" : "status connected";
    case HidProtocol::deviceCtlReportId:
        return bytes[1] == HidProtocol::deviceActionBootsel ? "bootsel" : "output " + hexText(bytes);
    default:
        return "output " + hexText(bytes);
    }
}

std::optional<std::string> recordText(const SimulatorRecord& record) {
    switch (record.kind) {
    case SimulatorRecordKind::Connected:
        return std::nullopt;
    case SimulatorRecordKind::Opened:
        return "opened " + record.text;
    case SimulatorRecordKind::Closed:
        return "closed";
    case SimulatorRecordKind::Subscribed:
        return "subscribed " + record.text;
    case SimulatorRecordKind::ClientEvent:
        return "event " + record.text + (record.value == 0 ? "" : " value=" + std::to_string(record.value));
    case SimulatorRecordKind::Executed:
        return executedText(record.text);
    case SimulatorRecordKind::Dummy:
        return "dummy";
    case SimulatorRecordKind::Command:
        return "command " + record.text;
    case SimulatorRecordKind::Unchanged:
        return "unchanged " + record.text;
    case SimulatorRecordKind::Exception:
        return "exception " + std::to_string(record.value);
    }
    return std::nullopt;
}
