// Any text as the command file that a command is written into and removed from.

#include "companion/draft/command_edit.h"

#include "config/button_config.h"
#include "config/json.h"
#include "tests/fuzz/fuzz_support.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

const CommandPlace place{"AP", false, "PRESS", "PFD"};
const std::string command = "(>K:AP_MASTER) \"\\";

bool isAccepted(const std::string& text, ButtonConfig& config) {
    std::string error;
    return config.parse(text, error);
}

void checkWritten(const std::string& before, std::string text) {
    ButtonConfig config;
    const bool wasAccepted = isAccepted(before, config);
    if (!setCommandText(text, place, command)) {
        require(text == before, "a refused change changes nothing");
        return;
    }
    require(JsonParser::parse(text).ok, "a changed text is JSON");
    if (wasAccepted) {
        require(isAccepted(text, config), "the bridge still accepts the file");
        require(config.lookup("AP", "PRESS", "PFD") == command, "the bridge finds the command");
    }
    std::string again = text;
    require(setCommandText(again, place, command) && again == text, "writing the same again changes nothing");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string before(inputText(data, size));
    ButtonConfig config;
    checkWritten(before, before);
    std::string text = before;
    if (removeCommandText(text, place)) {
        require(JsonParser::parse(text).ok, "a text without the command is JSON");
        require(isAccepted(text, config) || !isAccepted(before, config), "the bridge still accepts the file");
    }
    return 0;
}
