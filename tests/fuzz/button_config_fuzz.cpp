#include "config/button_config.h"

#include "config/names.h"
#include "tests/fuzz/fuzz_support.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

/// Looks up all that one element of the file names.
void checkElement(const ButtonConfig& config, const JsonValue& element) {
    std::string name;
    const JsonValue* commands = nullptr;
    if (!getString(element, "name", name) || !getObject(element, "commands", commands)) {
        return;
    }
    require(config.contains(normalizeName(name)), "an element with commands is listed");
    for (const auto& [action, roles] : commands->object) {
        for (const auto& [role, command] : roles.object) {
            const std::string found = config.lookup(name, action, role);
            require(found.find('\0') == std::string::npos, "a command ends before its first zero byte");
            require(found == config.lookup(normalizeName(name), action, role), "a lookup normalises the name");
        }
    }
}

void checkSection(const ButtonConfig& config, const JsonValue& root, std::string_view key) {
    if (const JsonValue* section = find(root, key)) {
        for (const JsonValue& element : section->array) {
            checkElement(config, element);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = inputText(data, size);
    ButtonConfig config;
    std::string error;
    const bool loaded = config.parse(text, error);
    require(loaded == error.empty(), "a failure has a reason and success has none");
    require(config.lookup("", "PRESS", "").empty() && config.lookup(" ", "PRESS", "").empty(),
            "a name of nothing is out of reach");
    if (loaded) {
        const JsonParseResult document = JsonParser::parse(text);
        checkSection(config, document.value, "buttons");
        checkSection(config, document.value, "knobs");
    }
    return 0;
}
