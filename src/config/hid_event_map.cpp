#include "config/hid_event_map.h"

#include "config/config_file.h"

namespace {

constexpr ConfigFileMessages eventMapMessages{"Event map not found: ", "Failed to open event map: ",
                                              "Event map parse error: ", "Event map root must be an object"};

/// Reads a member that maps names to numbers; `names` maps numbers to names. Members of another type are skipped. False
/// if no name is left.
bool readNames(const JsonValue& root, std::string_view key, std::map<std::int32_t, std::string>& names) {
    const JsonValue* section = nullptr;
    if (!getObject(root, key, section)) {
        return false;
    }
    for (const auto& [name, value] : section->object) {
        std::int32_t number = 0;
        if (getInt(*section, name, number)) {
            names[number] = name;
        }
    }
    return !names.empty();
}

} // namespace

bool HidEventMap::load(const std::string& path, std::string& error) {
    std::string text;
    return readConfigFile(path, eventMapMessages, text, error) && parse(text, error);
}

bool HidEventMap::parse(std::string_view text, std::string& error) {
    JsonValue root;
    if (!parseConfigRoot(text, eventMapMessages, root, error)) {
        return false;
    }
    eventTypes.clear();
    controlIds.clear();
    const bool hasEventTypes = readNames(root, "event_types", eventTypes);
    const bool hasControlIds = readNames(root, "control_ids", controlIds);
    if (!hasEventTypes) {
        error = "Event map missing valid event_types entries";
        return false;
    }
    if (!hasControlIds) {
        error = "Event map missing valid control_ids entries";
        return false;
    }
    return true;
}
