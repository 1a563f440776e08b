#include "companion/draft/configuration_draft.h"

#include "companion/draft/command_edit.h"
#include "companion/draft/json_edit.h"
#include "config/names.h"

#include <map>
#include <optional>
#include <utility>

namespace {

constexpr std::size_t mostSteps = 200;

/// The board's entry in "devices"; the place behind the last entry if it has none.
std::vector<PathStep> deviceEntry(const JsonNode& settings, const std::string& boardId) {
    const JsonNode* const devices = settings.member("devices");
    std::size_t index = 0;
    for (; devices != nullptr && index < devices->children.size(); ++index) {
        const JsonNode* const id = devices->children[index]->member("boardId");
        if (id != nullptr && normalizeBoardId(id->value.string) == normalizeBoardId(boardId)) {
            break;
        }
    }
    return {keyStep("devices"), elementStep(index)};
}

bool setRoleText(std::string& text, const std::string& boardId, const std::string& role) {
    const JsonDocument document("", text);
    if (document.root() == nullptr) {
        return false;
    }
    std::vector<PathStep> path = deviceEntry(*document.root(), boardId);
    const bool isListed = followPath(*document.root(), path).steps == path.size();
    if (!isListed && !role.empty()) {
        return setJsonValue(text, path,
                            "{\"boardId\": " + quotedJson(boardId) + ", \"role\": " + quotedJson(role) + "}");
    }
    path.push_back(keyStep("role"));
    if (role.empty()) {
        removeJsonValue(text, path);
        return true;
    }
    return setJsonValue(text, path, quotedJson(role));
}

} // namespace

ConfigurationDraft::ConfigurationDraft(ConfigurationPaths paths, ConfigurationTexts texts)
    : paths(std::move(paths)), now(std::move(texts)) {}

void ConfigurationDraft::step(ConfigurationTexts next) {
    if (next == now) {
        return;
    }
    if (before.size() == mostSteps) {
        before.erase(before.begin());
    }
    before.push_back(std::exchange(now, std::move(next)));
}

void ConfigurationDraft::undo() {
    if (canUndo()) {
        now = std::move(before.back());
        before.pop_back();
    }
}

bool ConfigurationDraft::changeText(ConfigurationTexts& texts, ConfigurationPart part, const Change& change,
                                    std::string& error) const {
    if (!change(texts[part])) {
        error = paths[part] + " can't take this change: something in it isn't as the bridge expects. "
                              "Correct what the check finds first";
        return false;
    }
    return true;
}

bool ConfigurationDraft::change(ConfigurationPart part, const Change& change, std::string& error) {
    ConfigurationTexts next = now;
    if (!changeText(next, part, change, error)) {
        return false;
    }
    step(std::move(next));
    return true;
}

bool ConfigurationDraft::setUsbIds(const std::string& vendorId, const std::string& productId, std::string& error) {
    const Change edit = [&](std::string& text) {
        return setJsonValue(text, {keyStep("hid"), keyStep("vid")}, quotedJson(vendorId)) &&
               setJsonValue(text, {keyStep("hid"), keyStep("pid")}, quotedJson(productId));
    };
    return change(ConfigurationPart::Settings, edit, error);
}

bool ConfigurationDraft::isNameFree(std::int32_t number, std::string_view name, std::string& error) const {
    const std::string wanted = normalizeName(name);
    if (wanted.empty()) {
        error = "A control's name has at least one letter or digit";
        return false;
    }
    for (const auto& [other, otherName] : controlNames(now[ConfigurationPart::EventMap])) {
        if (other != number && normalizeName(otherName) == wanted) {
            error = "Control " + std::to_string(other) + " already has this name";
            return false;
        }
    }
    return true;
}

bool ConfigurationDraft::nameControl(std::int32_t number, const std::string& name, std::string& error) {
    if (!isNameFree(number, name, error)) {
        return false;
    }
    const std::map<std::int32_t, std::string> names = controlNames(now[ConfigurationPart::EventMap]);
    const auto old = names.find(number);
    if (old == names.end()) {
        const Change add = [&](std::string& text) {
            return setJsonValue(text, {keyStep("control_ids"), keyStep(name)}, std::to_string(number));
        };
        return change(ConfigurationPart::EventMap, add, error);
    }
    const Change renameKey = [&](std::string& text) {
        return renameJsonKey(text, {keyStep("control_ids"), keyStep(old->second)}, name);
    };
    const Change renameEntries = [&](std::string& text) { return renameControlInCommands(text, old->second, name); };
    ConfigurationTexts next = now;
    if (!changeText(next, ConfigurationPart::EventMap, renameKey, error) ||
        !changeText(next, ConfigurationPart::Commands, renameEntries, error)) {
        return false;
    }
    step(std::move(next));
    return true;
}

bool ConfigurationDraft::setCommand(const CommandPlace& place, const std::string& command, std::string& error) {
    const Change edit = [&](std::string& text) { return setCommandText(text, place, command); };
    return change(ConfigurationPart::Commands, edit, error);
}

bool ConfigurationDraft::clearCommand(const CommandPlace& place, std::string& error) {
    const Change edit = [&](std::string& text) { return removeCommandText(text, place); };
    return change(ConfigurationPart::Commands, edit, error);
}

bool ConfigurationDraft::setRole(const std::string& boardId, const std::string& role, std::string& error) {
    const Change edit = [&](std::string& text) { return setRoleText(text, boardId, role); };
    return change(ConfigurationPart::Settings, edit, error);
}

bool ConfigurationDraft::setProfileValue(const std::string& profile, const std::string& part, const std::string& key,
                                         const std::string& value, std::string& error) {
    const PathStep name = nameStep(normalizeName(profile));
    const Change edit = [&](std::string& text) {
        return setJsonValue(text, {keyStep("outputs"), keyStep("profiles"), name, keyStep(part), keyStep(key)}, value);
    };
    return change(ConfigurationPart::Settings, edit, error);
}

ConfigurationVerdict ConfigurationDraft::verdict() const {
    return checkConfiguration(paths[ConfigurationPart::Settings], [this](const std::string& path) {
        for (const ConfigurationPart part : configurationParts) {
            if (path == paths[part]) {
                return std::optional(now[part]);
            }
        }
        return std::optional<std::string>();
    });
}
