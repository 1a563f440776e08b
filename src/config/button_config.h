#pragma once

#include "config/json.h"

#include <string>
#include <string_view>
#include <unordered_map>

/// What each named control does: control name to action to role to command text. Keys at every level are normalised;
/// commands are the file's bytes. Loaded once at start, read without locks afterwards.
class ButtonConfig {
public:
    /// Replaces the table from the file. False with the message in `error`. Throws as FileSystem::exists does when the
    /// file system can't say whether the file exists.
    bool load(const std::string& path, std::string& error);

    /// The same from the file's text.
    bool parse(std::string_view text, std::string& error);

    /// The command for a control, an action and a role, or an empty text. A role without a command of its own gets the
    /// one of "DEFAULT"; so does an empty role.
    std::string lookup(std::string_view name, std::string_view action, std::string_view role) const;

    /// Whether the file lists the control, by its already normalised name.
    bool contains(const std::string& normalizedName) const;

private:
    using RoleCommands = std::unordered_map<std::string, std::string>;
    using ActionCommands = std::unordered_map<std::string, RoleCommands>;

    std::unordered_map<std::string, ActionCommands> table;

    bool parseOptionalSection(const JsonValue& root, const std::string& sectionName, std::string& error);
    bool parseCommandSection(const std::string& sectionName, const JsonValue& array, std::string& error);
    void storeCommands(const std::string& name, const JsonValue& commands);
};
