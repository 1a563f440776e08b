#include "config/output_profiles.h"

#include "config/app_config.h"
#include "config/names.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

bool isPercentage(std::int32_t level) {
    return level >= 0 && level <= 100;
}

/// The normalised text of a member that is a string, even an empty one.
void readName(const JsonValue& section, std::string_view key, std::string& name) {
    std::string text;
    if (getString(section, key, text)) {
        name = normalizeName(text);
    }
}

OutputProfile parseProfile(const JsonValue& section) {
    OutputProfile profile = makeDefaultProfile();
    const JsonValue* part = nullptr;
    if (getObject(section, "backlight", part)) {
        profile.backlight = parseBacklightProfile(*part, profile.backlight);
    }
    if (getObject(section, "simDisconnected", part)) {
        profile.simDisconnected = parseLedEffect(*part, profile.simDisconnected);
    }
    if (getObject(section, "batteryOff", part)) {
        profile.batteryOff = parseLedEffect(*part, profile.batteryOff);
    }
    return profile;
}

void parseRoleProfiles(const JsonValue& section, std::map<std::string, std::string>& roleProfiles) {
    for (const auto& [role, profile] : section.object) {
        if (profile.type != JsonType::String) {
            continue;
        }
        const std::string roleName = normalizeName(role);
        const std::string profileName = normalizeName(profile.string);
        if (!roleName.empty() && !profileName.empty()) {
            roleProfiles[roleName] = profileName;
        }
    }
}

void parseProfiles(const JsonValue& section, std::map<std::string, OutputProfile>& profiles) {
    for (const auto& [key, profile] : section.object) {
        const std::string name = normalizeName(key);
        if (profile.type == JsonType::Object && !name.empty()) {
            profiles[name] = parseProfile(profile);
        }
    }
}

bool parseDevice(const JsonValue& element, const std::string& place, DeviceEntry& entry, std::string& error) {
    if (element.type != JsonType::Object) {
        error = place + " must be an object";
        return false;
    }
    getString(element, "boardId", entry.boardId);
    getInt(element, "index", entry.index);
    getString(element, "role", entry.role);
    getString(element, "ledProfile", entry.ledProfile);
    entry.boardId = normalizeBoardId(entry.boardId);
    if (entry.boardId.empty() && entry.index < 0) {
        error = place + " must include boardId or index";
        return false;
    }
    // With a boardId, an index of -1 means no index.
    if (entry.index < -1) {
        error = place + " index must be >= 0";
        return false;
    }
    return true;
}

/// The rest of the message of the first check that fails, or null.
const char* backlightFault(const BacklightProfile& backlight) {
    if (backlight.min < 0 || backlight.max > 100 || backlight.min > backlight.max) {
        return "min/max must be between 0-100";
    }
    if (!isPercentage(backlight.defaultValue)) {
        return "default must be between 0-100";
    }
    if (!isPercentage(backlight.value)) {
        return "value must be between 0-100";
    }
    return backlight.scale > 0.0 ? nullptr : "scale must be > 0";
}

bool isEffectAcceptable(const LedEffect& effect) {
    return effect.effect.empty() || isValidEffectName(effect.effect);
}

bool validateProfile(const std::string& place, const OutputProfile& profile, std::string& error) {
    const char* fault = backlightFault(profile.backlight);
    if (fault != nullptr) {
        error = place + ".backlight " + fault;
        return false;
    }
    if (!isEffectAcceptable(profile.simDisconnected)) {
        error = place + ".simDisconnected.effect is invalid";
        return false;
    }
    if (!isEffectAcceptable(profile.batteryOff)) {
        error = place + ".batteryOff.effect is invalid";
        return false;
    }
    return true;
}

/// The profile name of the entry itself, else of its role; empty if neither has one.
std::string profileNameOf(const OutputsConfig& outputs, const DeviceEntry& entry) {
    std::string name = normalizeName(entry.ledProfile);
    if (name.empty() && !entry.role.empty()) {
        const auto roleProfile = outputs.roleProfiles.find(normalizeName(entry.role));
        if (roleProfile != outputs.roleProfiles.end()) {
            name = normalizeName(roleProfile->second);
        }
    }
    return name;
}

} // namespace

OutputProfile makeDefaultProfile() {
    OutputProfile profile;
    profile.simDisconnected = {"flash", 0, 4, 150, 100};
    profile.batteryOff = {"breathe", 0, 5, 1000, 50};
    return profile;
}

BacklightProfile parseBacklightProfile(const JsonValue& section, const BacklightProfile& base) {
    BacklightProfile backlight = base;
    readName(section, "mode", backlight.mode);
    getInt(section, "min", backlight.min);
    getInt(section, "max", backlight.max);
    getInt(section, "default", backlight.defaultValue);
    getInt(section, "value", backlight.value);
    const JsonValue* scale = find(section, "scale");
    if (scale != nullptr && scale->type == JsonType::Number) {
        backlight.scale = scale->number;
    }
    return backlight;
}

LedEffect parseLedEffect(const JsonValue& section, const LedEffect& base) {
    LedEffect effect = base;
    readName(section, "effect", effect.effect);
    getInt(section, "brightness", effect.brightness);
    getInt(section, "param0", effect.param0);
    getInt(section, "param1", effect.param1);
    getInt(section, "param2", effect.param2);
    // The readable names win where a file has both.
    getInt(section, "count", effect.param0);
    getInt(section, "periodMs", effect.param1);
    getInt(section, "level", effect.param2);
    return effect;
}

bool isValidEffectName(std::string_view text) {
    constexpr std::array<std::string_view, 4> names{"OFF", "STEADY", "BREATHE", "FLASH"};
    return std::find(names.begin(), names.end(), normalizeName(text)) != names.end();
}

OutputsConfig parseOutputs(const JsonValue& section) {
    OutputsConfig outputs;
    getInt(section, "debounceMs", outputs.debounceMs);
    readName(section, "defaultProfile", outputs.defaultProfile);
    const JsonValue* part = nullptr;
    if (getObject(section, "roleProfiles", part)) {
        parseRoleProfiles(*part, outputs.roleProfiles);
    }
    if (getObject(section, "profiles", part)) {
        parseProfiles(*part, outputs.profiles);
    }
    return outputs;
}

bool parseDevices(const JsonValue& root, std::vector<DeviceEntry>& devices, std::string& error) {
    devices.clear();
    const JsonValue* list = find(root, "devices");
    if (list == nullptr) {
        return true;
    }
    if (list->type != JsonType::Array) {
        error = "'devices' must be an array";
        return false;
    }
    for (std::size_t position = 0; position < list->array.size(); ++position) {
        DeviceEntry entry;
        if (!parseDevice(list->array[position], "devices[" + std::to_string(position) + "]", entry, error)) {
            return false;
        }
        devices.push_back(std::move(entry));
    }
    return true;
}

void ensureDefaultProfile(OutputsConfig& outputs) {
    if (outputs.defaultProfile.empty()) {
        outputs.defaultProfile = "DEFAULT";
    }
    outputs.profiles.try_emplace(normalizeName(outputs.defaultProfile), makeDefaultProfile());
}

bool validateProfiles(const OutputsConfig& outputs, std::string& error) {
    return std::all_of(outputs.profiles.begin(), outputs.profiles.end(), [&](const auto& profile) {
        return validateProfile("outputs.profiles[" + profile.first + "]", profile.second, error);
    });
}

const DeviceEntry* findDeviceEntry(const AppConfig& config, const std::string& deviceName, std::int32_t index) {
    const std::vector<DeviceEntry>& devices = config.outputs.devices;
    // Identity first, over the whole list: an index changes with every replug, an identity never.
    if (!deviceName.empty()) {
        const std::string boardId = normalizeBoardId(deviceName);
        const auto match = std::find_if(devices.begin(), devices.end(), [&](const DeviceEntry& entry) {
            return !entry.boardId.empty() && entry.boardId == boardId;
        });
        if (match != devices.end()) {
            return &*match;
        }
    }
    // Entries without an index have -1, which is no board's.
    if (index < 0) {
        return nullptr;
    }
    const auto match =
        std::find_if(devices.begin(), devices.end(), [&](const DeviceEntry& entry) { return entry.index == index; });
    return match == devices.end() ? nullptr : &*match;
}

const OutputProfile* resolveProfile(const AppConfig& config, const DeviceEntry* entry) {
    const OutputsConfig& outputs = config.outputs;
    std::string name = entry != nullptr ? profileNameOf(outputs, *entry) : "";
    if (name.empty()) {
        name = normalizeName(outputs.defaultProfile);
    }
    auto profile = outputs.profiles.find(name);
    if (profile == outputs.profiles.end()) {
        // A misspelt profile name leaves the board with some light rather than none.
        profile = outputs.profiles.begin();
    }
    return profile == outputs.profiles.end() ? nullptr : &profile->second;
}
