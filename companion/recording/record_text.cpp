#include "companion/recording/record_text.h"

#include "companion/recording/report_words.h"
#include "hid/hex_text.h"
#include "hid/usb_ids.h"
#include "simulation/scenarios/scenario_line.h"
#include "text/ascii.h"

#include <algorithm>

namespace {

constexpr std::int64_t nanosecondsPerMs = 1'000'000;
constexpr std::int32_t highestControl = 65535;

/// "1234".
std::string idDigits(const std::string& text) {
    return usbIdText(parseUsbId(text).value_or(0));
}

bool isBlankOrControl(char byte) {
    return byte == ' ' || byte == '\x7F' || (byte >= 0 && byte < ' ');
}

/// Whether a scenario's step can call a control by this name.
bool isWord(const std::string& name) {
    return !name.empty() && std::ranges::none_of(name, isBlankOrControl) && !wholeNumber(name, 0, highestControl);
}

std::map<std::int32_t, std::string> usableControls(const HidEventMap& eventMap) {
    std::map<std::int32_t, std::string> usable;
    for (const auto& [number, name] : eventMap.controlIds) {
        const bool isLine = std::ranges::none_of(name, [](char byte) { return byte != ' ' && isBlankOrControl(byte); });
        if (number >= 0 && number <= highestControl && isLine && !trimmed(name).empty()) {
            usable[number] = trimmed(name);
        }
    }
    return usable;
}

std::string block(const std::string& opening, std::string_view text) {
    return opening + " <<END\n" + std::string(text) + (text.ends_with('\n') ? "" : "\n") + "END\n";
}

/// An identity has sixteen hexadecimal digits; anything else that isn't a path is a serial number.
std::string identityText(const std::string& name) {
    constexpr std::size_t idSize = 8;
    const auto bytes = bytesFromHex(name);
    if (bytes && bytes->size() == idSize) {
        return " id=" + name;
    }
    return std::ranges::any_of(name, isBlankOrControl) ? " id=none" : " id=none serial=" + name;
}

} // namespace

RecordText::RecordText(const BridgeConfiguration& configuration, std::int64_t begin)
    : ids("vid=" + idDigits(configuration.settings.hid.vid) + " pid=" + idDigits(configuration.settings.hid.pid)),
      controls(usableControls(configuration.eventMap)),
      written(begin) {}

std::string RecordText::header(std::string_view config, std::string_view buttons) const {
    std::string text = "# A record of vantrel. \"vantrel replay\" shows what the bridge does with it.\n\n"
                       "unchecked\n" +
                       block("config", config) +
                       "config mappings.buttonConfigPath = \"buttons.json\"\n"
                       "config mappings.hidEventMapPath = null\n"
                       "config logging.debug = 1\n" +
                       block("file buttons.json", buttons);
    for (const auto& [number, name] : controls) {
        text += "control " + std::to_string(number) + " = " + name + '\n';
    }
    return text + '\n';
}

std::string RecordText::waitUntil(std::int64_t time) {
    const std::int64_t milliseconds = (time - written) / nanosecondsPerMs;
    if (milliseconds <= 0) {
        return "";
    }
    written += milliseconds * nanosecondsPerMs;
    return "> wait " + std::to_string(milliseconds) + "ms\n";
}

std::string RecordText::declare(const std::string& name) {
    const auto [entry, isNew] = words.try_emplace(name, "board" + std::to_string(words.size() + 1));
    return isNew ? "board " + entry->second + identityText(name) + ' ' + ids + '\n' : "";
}

std::string RecordText::arrived(const LiveBoard& board, std::int64_t now) {
    const bool isFirst = words.empty();
    const std::string wait = waitUntil(now);
    const std::string declaration = declare(board.name);
    // The bridge starts with the first board.
    return (isFirst ? "" : wait) + declaration + "> plug " + words[board.name] + '\n' + (isFirst ? "> connect\n" : "");
}

std::string RecordText::left(const LiveBoard& board, std::int64_t now) {
    return waitUntil(now) + "> unplug " + words[board.name] + '\n';
}

std::string RecordText::reported(const LiveReport& report) {
    const std::string wait = waitUntil(report.time);
    const auto control = [this](std::uint16_t number) { return controlWord(number); };
    return wait + "> " + words[report.board] + ' ' + reportWords(report.bytes, control) + '\n';
}

std::string RecordText::controlWord(std::uint16_t number) const {
    const auto found = controls.find(number);
    const auto sameName = [&](const auto& entry) { return entry.second == found->second; };
    const bool isUsable =
        found != controls.end() && isWord(found->second) && std::ranges::count_if(controls, sameName) == 1;
    return isUsable ? found->second : std::to_string(number);
}
