#include "companion/draft/control_list.h"

#include "companion/check/json_document.h"
#include "config/names.h"

#include <algorithm>
#include <map>

namespace {

void addListedCommand(std::vector<ListedCommand>& commands, ListedCommand added) {
    const auto same = std::ranges::find_if(commands, [&](const ListedCommand& command) {
        return command.action == added.action && command.role == added.role;
    });
    if (same == commands.end()) {
        commands.push_back(std::move(added));
    } else {
        *same = std::move(added);
    }
}

void readCommands(const JsonNode& actions, ListedControl& control) {
    for (const JsonNode* action : actions.children) {
        const std::string name = normalizeName(action->key);
        control.isKnob = control.isKnob || name.starts_with("CW") || name.starts_with("CCW");
        for (const JsonNode* command : action->children) {
            if (command->type() == JsonType::String) {
                addListedCommand(control.commands, {name, normalizeName(command->key), command->value.string});
            }
        }
    }
}

void readEntry(const JsonNode& entry, bool isKnob, std::map<std::string, ListedControl>& byName) {
    const JsonNode* const name = entry.member("name");
    const auto control = byName.find(name == nullptr ? "" : normalizeName(name->value.string));
    if (control == byName.end()) {
        return;
    }
    control->second.isKnob = control->second.isKnob || isKnob;
    if (const JsonNode* const actions = entry.member("commands")) {
        readCommands(*actions, control->second);
    }
}

void readSections(const std::string& text, std::map<std::string, ListedControl>& byName) {
    const JsonDocument document("", text);
    for (const std::string_view section : {"buttons", "knobs"}) {
        const JsonNode* const list = document.root() == nullptr ? nullptr : document.root()->member(section);
        for (std::size_t i = 0; list != nullptr && i < list->children.size(); ++i) {
            readEntry(*list->children[i], section == "knobs", byName);
        }
    }
}

} // namespace

std::vector<ListedControl> listControls(const ConfigurationTexts& texts) {
    std::map<std::string, ListedControl> byName;
    for (const auto& [number, name] : controlNames(texts[ConfigurationPart::EventMap])) {
        byName[normalizeName(name)] = {number, name, false, {}};
    }
    readSections(texts[ConfigurationPart::Commands], byName);
    std::vector<ListedControl> controls;
    controls.reserve(byName.size());
    for (auto& [name, control] : byName) {
        controls.push_back(std::move(control));
    }
    std::ranges::sort(controls, {}, &ListedControl::number);
    return controls;
}
