#include "config/button_config.h"

#include "config/config_file.h"
#include "config/names.h"

#include <cstddef>

namespace {

constexpr ConfigFileMessages buttonConfigMessages{
    "Button config not found: ", "Failed to open button config: ", "Button config parse error: ",
    "Button config root must be an object"};

/// Answers for every role that has no command of its own.
constexpr const char* defaultRole = "DEFAULT";

std::string roleKey(std::string_view role) {
    return role.empty() ? defaultRole : normalizeName(role);
}

} // namespace

bool ButtonConfig::load(const std::string& path, std::string& error) {
    std::string text;
    return readConfigFile(path, buttonConfigMessages, text, error) && parse(text, error);
}

bool ButtonConfig::parse(std::string_view text, std::string& error) {
    JsonValue root;
    if (!parseConfigRoot(text, buttonConfigMessages, root, error)) {
        return false;
    }
    // Only now: a file that isn't JSON leaves the old commands, one with a bad element has replaced them.
    table.clear();
    return parseOptionalSection(root, "buttons", error) && parseOptionalSection(root, "knobs", error);
}

bool ButtonConfig::parseOptionalSection(const JsonValue& root, const std::string& sectionName, std::string& error) {
    const JsonValue* section = find(root, sectionName);
    if (section == nullptr) {
        return true;
    }
    if (section->type != JsonType::Array) {
        error = "'" + sectionName + "' must be an array";
        return false;
    }
    return parseCommandSection(sectionName, *section, error);
}

bool ButtonConfig::parseCommandSection(const std::string& sectionName, const JsonValue& array, std::string& error) {
    for (std::size_t position = 0; position < array.array.size(); ++position) {
        const JsonValue& element = array.array[position];
        const std::string place = sectionName + "[" + std::to_string(position) + "]";
        if (element.type != JsonType::Object) {
            error = place + " must be an object";
            return false;
        }
        std::string name;
        if (!getString(element, "name", name)) {
            error = place + " missing name";
            return false;
        }
        const JsonValue* commands = nullptr;
        if (getObject(element, "commands", commands)) {
            storeCommands(normalizeName(name), *commands);
        }
    }
    return true;
}

void ButtonConfig::storeCommands(const std::string& name, const JsonValue& commands) {
    // A name that occurs twice merges, so that one control can be split over several elements. An element without
    // commands doesn't get here and so isn't listed: its control keeps the simulator's built-in event.
    ActionCommands& actions = table[name];
    for (const auto& [action, roles] : commands.object) {
        if (roles.type != JsonType::Object) {
            continue;
        }
        RoleCommands& roleCommands = actions[normalizeName(action)];
        for (const auto& [role, command] : roles.object) {
            if (command.type == JsonType::String) {
                // The module reads a command up to its first zero byte, and so does everything on the way to it.
                roleCommands[roleKey(role)] = command.string.substr(0, command.string.find('\0'));
            }
        }
    }
}

std::string ButtonConfig::lookup(std::string_view name, std::string_view action, std::string_view role) const {
    const std::string nameKey = normalizeName(name);
    // A name of blanks alone normalises to the empty name, which unnamed controls have. They must not find this entry.
    if (nameKey.empty() || action.empty()) {
        return "";
    }
    const auto actions = table.find(nameKey);
    if (actions == table.end()) {
        return "";
    }
    const auto roles = actions->second.find(normalizeName(action));
    if (roles == actions->second.end()) {
        return "";
    }
    // An empty command is still a command: with it, a file switches a control off for one display.
    auto command = roles->second.find(roleKey(role));
    if (command == roles->second.end()) {
        command = roles->second.find(defaultRole);
    }
    return command == roles->second.end() ? "" : command->second;
}

bool ButtonConfig::contains(const std::string& normalizedName) const {
    return table.contains(normalizedName);
}
