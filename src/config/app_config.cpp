#include "config/app_config.h"

#include "config/config_file.h"
#include "platform/file_system.h"
#include "text/module_commands.h"

namespace {

constexpr std::int32_t firstBattery = 1;
constexpr std::int32_t lastBattery = 16;

/// With what goes before it in the command that adds it. The message below says the number.
constexpr std::size_t longestLightVariable = ModuleCommands::longest - ModuleCommands::addVariable.size();
static_assert(longestLightVariable == 240);

constexpr ConfigFileMessages messages{
    "Config file not found: ", "Failed to open config file: ", "Config parse error: ", "Config root must be an object"};

/// On/off settings are numbers. A JSON boolean is ignored like any other type, so `"enabled": false` leaves a setting
/// on. That is the rule of the format; the schemas point it out while the user types.
void getSwitch(const JsonValue& section, std::string_view key, bool& out) {
    std::int32_t number = 0;
    if (getInt(section, key, number)) {
        out = number != 0;
    }
}

bool parseHid(const JsonValue& root, HidConfig& hid, std::string& error) {
    const JsonValue* section = nullptr;
    if (!getObject(root, "hid", section)) {
        error = "Missing 'hid' section";
        return false;
    }
    if (!getString(*section, "vid", hid.vid)) {
        error = "Missing or invalid 'hid.vid'";
        return false;
    }
    if (!getString(*section, "pid", hid.pid)) {
        error = "Missing or invalid 'hid.pid'";
        return false;
    }
    getInt(*section, "readIntervalMs", hid.readIntervalMs);
    getInt(*section, "scanIntervalMs", hid.scanIntervalMs);
    getSwitch(*section, "trace", hid.trace);
    return true;
}

bool parseMappings(const JsonValue& root, MappingsConfig& mappings, std::string& error) {
    const JsonValue* section = nullptr;
    if (!getObject(root, "mappings", section)) {
        error = "Missing 'mappings' section";
        return false;
    }
    if (!getString(*section, "buttonConfigPath", mappings.buttonConfigPath)) {
        error = "Missing or invalid 'mappings.buttonConfigPath'";
        return false;
    }
    getString(*section, "hidEventMapPath", mappings.hidEventMapPath);
    return true;
}

void parseMobiFlight(const JsonValue& section, MobiFlightConfig& mobiflight) {
    getSwitch(section, "enabled", mobiflight.enabled);
    getString(section, "clientName", mobiflight.clientName);
    getString(section, "commandChannel", mobiflight.commandChannel);
    getString(section, "responseChannel", mobiflight.responseChannel);
    getString(section, "lvarsChannel", mobiflight.lvarsChannel);
    getInt(section, "rpnRateLimitMs", mobiflight.rpnRateLimitMs);
    getInt(section, "mapHoldRepeatMs", mobiflight.mapHoldRepeatMs);
}

void parseExtensions(const JsonValue& section, ExtensionsConfig& extensions) {
    getSwitch(section, "singlePendingRead", extensions.singlePendingRead);
    getSwitch(section, "reopenStoppedReaders", extensions.reopenStoppedReaders);
    getSwitch(section, "renewRegistration", extensions.renewRegistration);
    getSwitch(section, "ownChannels", extensions.ownChannels);
    getSwitch(section, "lvarNumbers", extensions.lvarNumbers);
    getInt(section, "batteryIndex", extensions.batteryIndex);
    getString(section, "lightVariable", extensions.lightVariable);
}

void parseOptionalSections(const JsonValue& root, AppConfig& config) {
    const JsonValue* section = nullptr;
    if (getObject(root, "mobiflight", section)) {
        parseMobiFlight(*section, config.mobiflight);
    }
    if (getObject(root, "cdc", section)) {
        getSwitch(*section, "enabled", config.cdc.enabled);
        getString(*section, "comPort", config.cdc.comPort);
    }
    if (getObject(root, "logging", section)) {
        getSwitch(*section, "debug", config.logging.debug);
    }
    if (getObject(root, "extensions", section)) {
        parseExtensions(*section, config.extensions);
    }
    // Unlike the sections above, outputs never keep what the record held before: a profile that the file no longer has
    // must disappear.
    config.outputs = getObject(root, "outputs", section) ? parseOutputs(*section) : OutputsConfig();
}

/// Finds the two other files. The search never replaces a path that the file gives, even if no such file exists: the
/// user means that one and must learn that it is missing.
MappingsConfig resolveMappings(const std::string& path, const MappingsConfig& written) {
    MappingsConfig mappings;
    mappings.buttonConfigPath = resolveConfigPath(path, written.buttonConfigPath);
    mappings.hidEventMapPath = resolveConfigPath(path, written.hidEventMapPath);
    if (mappings.hidEventMapPath.empty()) {
        mappings.hidEventMapPath = findSiblingFile(path, "hid_event_map.json");
    }
    return mappings;
}

bool require(bool condition, const char* message, std::string& error) {
    if (!condition) {
        error = message;
    }
    return condition;
}

bool validateMobiFlight(const MobiFlightConfig& mobiflight, std::string& error) {
    // A disabled client's times are checked too, but not its channels.
    const bool off = !mobiflight.enabled;
    return require(mobiflight.rpnRateLimitMs >= 0, "mobiflight.rpnRateLimitMs must be >= 0", error) &&
           require(mobiflight.mapHoldRepeatMs > 0, "mobiflight.mapHoldRepeatMs must be > 0", error) &&
           require(off || !mobiflight.commandChannel.empty(), "mobiflight.commandChannel is required when enabled",
                   error) &&
           require(off || !mobiflight.responseChannel.empty(), "mobiflight.responseChannel is required when enabled",
                   error) &&
           require(off || !mobiflight.lvarsChannel.empty(), "mobiflight.lvarsChannel is required when enabled", error);
}

bool validateExtensions(const ExtensionsConfig& extensions, std::string& error) {
    return require(extensions.batteryIndex >= firstBattery && extensions.batteryIndex <= lastBattery,
                   "extensions.batteryIndex must be 1 to 16", error) &&
           require(!extensions.lightVariable.empty(), "extensions.lightVariable must not be empty", error) &&
           require(extensions.lightVariable.size() <= longestLightVariable,
                   "extensions.lightVariable must not be longer than 240 characters", error);
}

} // namespace

bool loadAppConfig(const std::string& path, AppConfig& config, std::string& error) {
    std::string text;
    return readConfigFile(path, messages, text, error) && parseAppConfig(text, path, config, error);
}

bool parseAppConfig(std::string_view text, const std::string& path, AppConfig& config, std::string& error) {
    JsonValue root;
    HidConfig hid = config.hid;
    MappingsConfig mappings;
    if (!parseConfigRoot(text, messages, root, error) || !parseHid(root, hid, error) ||
        !parseMappings(root, mappings, error)) {
        return false;
    }
    // From here on `config` changes; an error in one of the two sections above leaves it as it was.
    parseOptionalSections(root, config);
    config.hid = hid;
    config.mappings = resolveMappings(path, mappings);
    // The list is a top-level member of the file but belongs to the outputs, which were replaced just now.
    if (!parseDevices(root, config.outputs.devices, error)) {
        return false;
    }
    ensureDefaultProfile(config.outputs);
    return validateAppConfig(config, error);
}

bool validateAppConfig(const AppConfig& config, std::string& error) {
    return require(!config.hid.vid.empty(), "hid.vid is required", error) &&
           require(!config.hid.pid.empty(), "hid.pid is required", error) &&
           require(!config.mappings.buttonConfigPath.empty(), "mappings.buttonConfigPath is required", error) &&
           validateMobiFlight(config.mobiflight, error) &&
           require(!config.cdc.enabled || !config.cdc.comPort.empty(), "cdc.comPort is required when cdc.enabled=1",
                   error) &&
           require(config.outputs.debounceMs >= 0, "outputs.debounceMs must be >= 0", error) &&
           validateProfiles(config.outputs, error) && validateExtensions(config.extensions, error);
}

std::string resolveConfigPath(const std::string& configPath, const std::string& value) {
    if (value.empty() || FileSystem::isAbsolute(value)) {
        return value;
    }
    const std::string folder = FileSystem::parentPath(configPath);
    return folder.empty() ? value : FileSystem::join(folder, value);
}

std::string findSiblingFile(const std::string& configPath, const std::string& name) {
    const std::string folder = FileSystem::parentPath(configPath);
    if (folder.empty()) {
        return "";
    }
    const std::string path = FileSystem::join(folder, name);
    return FileSystem::existsOrFalse(path) ? path : "";
}
