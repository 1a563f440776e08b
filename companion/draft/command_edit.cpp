#include "companion/draft/command_edit.h"

#include "companion/draft/json_edit.h"
#include "config/names.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace {

using CommandPath = std::vector<PathStep>;

/// From an entry to the command.
CommandPath pathInEntry(const CommandPlace& place) {
    return {keyStep("commands"), nameStep(normalizeName(place.action)), nameStep(normalizeName(place.role))};
}

CommandPath joined(CommandPath path, const CommandPath& rest) {
    path.insert(path.end(), rest.begin(), rest.end());
    return path;
}

/// The paths of a control's entries, in the order in which the bridge reads them.
std::vector<CommandPath> entriesOf(const JsonNode& root, const std::string& control) {
    std::vector<CommandPath> entries;
    for (const char* const section : {"buttons", "knobs"}) {
        const JsonNode* const list = root.member(section);
        for (std::size_t i = 0; list != nullptr && i < list->children.size(); ++i) {
            const JsonNode* const name = list->children[i]->member("name");
            if (name != nullptr && normalizeName(name->value.string) == normalizeName(control)) {
                entries.push_back({keyStep(section), elementStep(i)});
            }
        }
    }
    return entries;
}

/// How many steps of the place each entry has already; the last of the best entries is the one that counts.
std::optional<CommandPath> bestEntry(const JsonNode& root, const CommandPlace& place) {
    std::optional<CommandPath> best;
    std::size_t most = 0;
    for (CommandPath& entry : entriesOf(root, place.control)) {
        const std::size_t steps = followPath(root, joined(entry, pathInEntry(place))).steps;
        if (steps >= most) {
            most = steps;
            best = std::move(entry);
        }
    }
    return best;
}

std::string newEntry(const CommandPlace& place, const std::string& command) {
    return "{\"name\": " + quotedJson(place.control) + ", \"commands\": {" + quotedJson(normalizeName(place.action)) +
           ": {" + quotedJson(normalizeName(place.role)) + ": " + quotedJson(command) + "}}}";
}

/// The end of the section that the control belongs to.
CommandPath behindLast(const JsonNode& root, const CommandPlace& place) {
    const char* const section = place.isKnob ? "knobs" : "buttons";
    const JsonNode* const list = root.member(section);
    return {keyStep(section), elementStep(list == nullptr ? 0 : list->children.size())};
}

/// Nothing but its name and an empty list of commands.
bool isBare(const JsonNode& entry) {
    const JsonNode* const commands = entry.member("commands");
    return entry.children.size() == 2 && commands != nullptr && commands->children.empty();
}

/// Removes the end of the path, then what has become empty before it, no further than `shortest` steps.
void removeWithParents(std::string& text, CommandPath path, std::size_t shortest) {
    while (path.size() >= shortest && removeJsonValue(text, path)) {
        path.pop_back();
        const JsonDocument document("", text);
        if (!followPath(*document.root(), path).node->children.empty()) {
            return;
        }
    }
}

} // namespace

bool setCommandText(std::string& text, const CommandPlace& place, const std::string& command) {
    const JsonDocument document("", text);
    if (document.root() == nullptr) {
        return false;
    }
    if (const std::optional<CommandPath> entry = bestEntry(*document.root(), place)) {
        return setJsonValue(text, joined(*entry, pathInEntry(place)), quotedJson(command));
    }
    return setJsonValue(text, behindLast(*document.root(), place), newEntry(place, command));
}

bool removeCommandText(std::string& text, const CommandPlace& place) {
    const JsonDocument document("", text);
    if (document.root() == nullptr) {
        return false;
    }
    const std::optional<CommandPath> entry = bestEntry(*document.root(), place);
    if (!entry) {
        return true;
    }
    const std::size_t stepsToAction = entry->size() + 2;
    removeWithParents(text, joined(*entry, pathInEntry(place)), stepsToAction);
    const JsonDocument rest("", text);
    if (isBare(*followPath(*rest.root(), *entry).node)) {
        removeJsonValue(text, *entry);
    }
    return true;
}

bool renameControlInCommands(std::string& text, const std::string& name, const std::string& newName) {
    const JsonDocument document("", text);
    if (document.root() == nullptr) {
        return false;
    }
    for (const CommandPath& entry : entriesOf(*document.root(), name)) {
        setJsonValue(text, joined(entry, {keyStep("name")}), quotedJson(newName));
    }
    return true;
}
