#include "hid/hid_log_lines.h"

#include "hid/hex_text.h"

#include <charconv>

namespace {

constexpr std::string_view connectionMark = "HID device connected: ";
constexpr std::string_view eventMark = "HID event from ";

constexpr std::string_view actionMark = " action=";
constexpr std::string_view amountMark = " mfAmount=";
constexpr std::string_view bytesMark = " bytes=";
constexpr std::string_view configuredRoleMark = " configuredRole=";
constexpr std::string_view controlMark = " controlId=";
constexpr std::string_view dataMark = " data=";
constexpr std::string_view indexMark = " index=";
constexpr std::string_view modeMark = " mode=";
constexpr std::string_view roleMark = " role=";
constexpr std::string_view speedMark = " speed=";
constexpr std::string_view typeMark = " type=";
constexpr std::string_view valueMark = " value=";

constexpr std::string_view fastWord = " fast=1";
constexpr std::string_view simEventWord = " simEvent=sent";
constexpr std::string_view rpnWord = " rpn=queued";

// Writing.

template <typename Number>
void addNumber(std::string& text, std::string_view mark, Number number) {
    text.append(mark).append(std::to_string(number));
}

void addText(std::string& text, std::string_view mark, std::string_view value) {
    if (!value.empty()) {
        text.append(mark).append(value);
    }
}

void addName(std::string& text, std::string_view name) {
    if (!name.empty()) {
        text.append("(").append(name).append(")");
    }
}

void addWord(std::string& text, std::string_view word, bool applies) {
    text.append(applies ? word : std::string_view());
}

// Reading, from a line's end to its beginning: the device's name comes first and may contain anything.

template <typename Number>
bool readNumber(std::string_view text, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

/// What follows the last such mark; takes it off the text together with the mark. None: there is no such mark.
std::optional<std::string_view> cutField(std::string_view& text, std::string_view mark) {
    const std::size_t place = text.rfind(mark);
    if (place == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view value = text.substr(place + mark.size());
    text = text.substr(0, place);
    return value;
}

template <typename Number>
bool cutNumber(std::string_view& text, std::string_view mark, Number& number) {
    const auto value = cutField(text, mark);
    return value && readNumber(*value, number);
}

/// The name in brackets at the text's end; empty when there is none.
std::string_view cutName(std::string_view& text) {
    const std::size_t open = text.find('(');
    if (open == std::string_view::npos || !text.ends_with(')')) {
        return {};
    }
    const std::string_view name = text.substr(open + 1, text.size() - open - 2);
    text = text.substr(0, open);
    return name;
}

bool cutWord(std::string_view& text, std::string_view word) {
    const bool applies = text.ends_with(word);
    text.remove_suffix(applies ? word.size() : 0);
    return applies;
}

/// Takes the outcome off the line's end.
bool cutOutcome(std::string_view& text, HidEventLine& line) {
    line.rpnQueued = cutWord(text, rpnWord);
    line.simEventSent = cutWord(text, simEventWord);
    line.fast = cutWord(text, fastWord);
    return text.rfind(amountMark) == std::string_view::npos || cutNumber(text, amountMark, line.amount);
}

/// Takes the event's numbers and the control's name off the line's end.
bool cutControl(std::string_view& text, HidEventLine& line) {
    if (!cutNumber(text, modeMark, line.event.mode) || !cutNumber(text, speedMark, line.event.speed) ||
        !cutNumber(text, valueMark, line.event.value)) {
        return false;
    }
    auto control = cutField(text, controlMark);
    if (!control) {
        return false;
    }
    line.controlName = cutName(*control);
    return readNumber(*control, line.event.controlId);
}

/// "0 type=1 action=BUTTON_PRESS role=PFD(BUTTON)".
bool readKind(std::string_view text, HidEventLine& line) {
    line.typeName = cutName(text);
    line.configuredRole = cutField(text, configuredRoleMark).value_or("");
    line.role = cutField(text, roleMark).value_or("");
    line.action = cutField(text, actionMark).value_or("");
    return cutNumber(text, typeMark, line.event.type) && readNumber(text, line.index);
}

/// What follows the first such mark; none: there is no such mark.
std::optional<std::string_view> behind(std::string_view line, std::string_view mark) {
    const std::size_t place = line.find(mark);
    return place == std::string_view::npos ? std::nullopt : std::optional(line.substr(place + mark.size()));
}

} // namespace

std::string hidConnectionLine(const HidConnectionLine& line) {
    std::string text(connectionMark);
    text += line.device;
    addNumber(text, indexMark, line.index);
    return text;
}

std::optional<HidConnectionLine> readHidConnectionLine(std::string_view line) {
    auto rest = behind(line, connectionMark);
    HidConnectionLine connection;
    if (!rest || !cutNumber(*rest, indexMark, connection.index)) {
        return std::nullopt;
    }
    connection.device = *rest;
    return connection;
}

std::string hidReportLine(std::string_view device, std::span<const std::uint8_t> bytes) {
    std::string text(hidReportMark);
    text += device;
    addNumber(text, bytesMark, bytes.size());
    text.append(dataMark).append(hexText(bytes));
    return text;
}

std::optional<HidReportLine> readHidReportLine(std::string_view line, std::string& error) {
    auto rest = behind(line, hidReportMark);
    const auto data = rest ? cutField(*rest, dataMark) : std::nullopt;
    const auto count = data ? cutField(*rest, bytesMark) : std::nullopt;
    if (!count) {
        error = "the line's end is missing";
        return std::nullopt;
    }
    const auto bytes = bytesFromHex(*data);
    std::size_t size = 0;
    if (!bytes || !readNumber(*count, size) || size == 0 || size > HidProtocol::reportSize || bytes->size() != size) {
        error = "its bytes aren't as many as it says";
        return std::nullopt;
    }
    return HidReportLine{std::string(*rest), *bytes};
}

std::string hidEventLine(const HidEventLine& line) {
    std::string text(eventMark);
    text += line.device;
    addNumber(text, indexMark, line.index);
    addNumber(text, typeMark, line.event.type);
    addText(text, actionMark, line.action);
    addText(text, roleMark, line.role);
    addText(text, configuredRoleMark, line.configuredRole);
    addName(text, line.typeName);
    addNumber(text, controlMark, line.event.controlId);
    addName(text, line.controlName);
    addNumber(text, valueMark, line.event.value);
    addNumber(text, speedMark, line.event.speed);
    addNumber(text, modeMark, line.event.mode);
    if (line.amount != 0) {
        addNumber(text, amountMark, line.amount);
    }
    addWord(text, fastWord, line.fast);
    addWord(text, simEventWord, line.simEventSent);
    addWord(text, rpnWord, line.rpnQueued);
    return text;
}

std::optional<HidEventLine> readHidEventLine(std::string_view line) {
    auto rest = behind(line, eventMark);
    HidEventLine event;
    if (!rest || !cutOutcome(*rest, event) || !cutControl(*rest, event)) {
        return std::nullopt;
    }
    const auto kind = cutField(*rest, indexMark);
    if (!kind || !readKind(*kind, event)) {
        return std::nullopt;
    }
    event.device = *rest;
    return event;
}
