#pragma once

#include "config/json.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

struct AppConfig;

/// How a board's backlight follows the simulator. Levels are percentages.
struct BacklightProfile {
    /// "FIXED" and "OFF" are known; any other text follows the simulator's variable.
    std::string mode = "lvar";
    std::int32_t min = 0;
    std::int32_t max = 100;
    /// Level while no value of the variable is known.
    std::int32_t defaultValue = 80;
    /// Level of the mode "FIXED".
    std::int32_t value = 80;
    double scale = 1.0;
};

/// One LED effect: "OFF", "STEADY", "BREATHE", "FLASH" in any case and spacing, or empty.
struct LedEffect {
    std::string effect;
    std::int32_t brightness = 0;
    /// Count, period in milliseconds and level of "BREATHE" and "FLASH".
    std::int32_t param0 = 0;
    std::int32_t param1 = 0;
    std::int32_t param2 = 0;
};

struct OutputProfile {
    BacklightProfile backlight;
    LedEffect simDisconnected;
    LedEffect batteryOff;
};

/// A board that the configuration names by its identity, its connection number, or both.
struct DeviceEntry {
    /// Normalised by `normalizeBoardId`; may be empty.
    std::string boardId;
    /// -1 means none.
    std::int32_t index = -1;
    std::string role;
    std::string ledProfile;
};

struct OutputsConfig {
    std::int32_t debounceMs = 50;
    std::string defaultProfile = "default";
    /// By normalised name.
    std::map<std::string, OutputProfile> profiles;
    /// Normalised role to normalised profile name.
    std::map<std::string, std::string> roleProfiles;
    std::vector<DeviceEntry> devices;
};

OutputProfile makeDefaultProfile();
BacklightProfile parseBacklightProfile(const JsonValue& section, const BacklightProfile& base);
LedEffect parseLedEffect(const JsonValue& section, const LedEffect& base);

/// True for the four effect names in any case and spacing; false for anything else, the empty text too.
bool isValidEffectName(std::string_view text);

/// Reads the section "outputs" into fresh defaults.
OutputsConfig parseOutputs(const JsonValue& section);

/// Reads the top-level array "devices" of the document, if there is one, over `devices`. False with `error` set at the
/// first bad element.
bool parseDevices(const JsonValue& root, std::vector<DeviceEntry>& devices, std::string& error);

/// Makes sure that the default profile's name is not empty and that a profile of that name exists.
void ensureDefaultProfile(OutputsConfig& outputs);

/// Checks every profile in key order. False with `error` set at the first failure.
bool validateProfiles(const OutputsConfig& outputs, std::string& error);

// Lookups while the bridge runs. Results point into the configuration; null means none. Any thread.

/// The entry of a board: an equal identity anywhere in the list beats an equal index.
const DeviceEntry* findDeviceEntry(const AppConfig& config, const std::string& deviceName, std::int32_t index);

/// The profile of an entry (null: no entry): its own, else its role's, else the default one. A chosen name that doesn't
/// exist gives the profile that sorts first.
const OutputProfile* resolveProfile(const AppConfig& config, const DeviceEntry* entry);
