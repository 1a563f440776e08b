#include "companion/demo/cockpit_configuration.h"

#include "companion/sample/sample_set.h"
#include "config/names.h"
#include "hid/hex_text.h"
#include "hid/usb_ids.h"
#include "platform/file_system.h"
#include "simulation/scenarios/json_text.h"
#include "simulation/scenarios/scenario_line.h"

#include <algorithm>
#include <utility>

namespace {

constexpr const char* settingsFile = "config.json";
constexpr const char* eventMapFile = "hid_event_map.json";

struct PanelRole {
    const char* role;
    /// For a board that the configuration knows only by its role.
    const char* identity;
};

constexpr PanelRole panelRoles[] = {{"PFD", "E66138A1B2C3D4E5"}, {"MFD", "E66138A1B2C3D4F6"}};

/// The page shows what the bridge makes of each event, which only DEBUG lines say.
void enableDebugLines(JsonValue& settings) {
    JsonValue logging = jsonObject();
    logging.object["debug"] = jsonNumber(1);
    JsonValue overlay = jsonObject();
    overlay.object["logging"] = std::move(logging);
    overlayJson(settings, overlay);
}

/// The other files stay where they are, and the bridge reads its settings from elsewhere.
void nameFilesInFull(JsonValue& settings, const MappingsConfig& mappings) {
    JsonValue paths = jsonObject();
    paths.object["buttonConfigPath"] = jsonString(mappings.buttonConfigPath);
    if (!mappings.hidEventMapPath.empty()) {
        paths.object["hidEventMapPath"] = jsonString(mappings.hidEventMapPath);
    }
    JsonValue overlay = jsonObject();
    overlay.object["mappings"] = std::move(paths);
    overlayJson(settings, overlay);
}

bool loadFromFiles(const std::string& path, CockpitConfiguration& configuration, std::string& error) {
    const std::string fullPath = FileSystem::toBytes(std::filesystem::absolute(FileSystem::fromBytes(path)));
    if (!loadAppConfig(fullPath, configuration.settings, error) ||
        !configuration.buttons.load(configuration.settings.mappings.buttonConfigPath, error)) {
        return false;
    }
    std::string mapError;
    if (!configuration.settings.mappings.hidEventMapPath.empty()) {
        configuration.eventMap.load(configuration.settings.mappings.hidEventMapPath, mapError);
    }
    std::string text;
    if (!FileSystem::readFile(fullPath, text)) {
        error = "can't be read";
        return false;
    }
    JsonValue settings = JsonParser::parse(text).value;
    enableDebugLines(settings);
    nameFilesInFull(settings, configuration.settings.mappings);
    configuration.files[settingsFile] = jsonText(settings);
    configuration.title = path;
    return true;
}

bool loadSample(CockpitConfiguration& configuration, std::string& error) {
    for (const auto& [name, text] : sampleSet()) {
        configuration.files[name] = text;
    }
    std::string& settingsText = configuration.files[settingsFile];
    if (!parseAppConfig(settingsText, settingsFile, configuration.settings, error) ||
        !configuration.buttons.parse(configuration.files[configuration.settings.mappings.buttonConfigPath], error) ||
        !configuration.eventMap.parse(configuration.files[eventMapFile], error)) {
        return false;
    }
    JsonValue settings = JsonParser::parse(settingsText).value;
    enableDebugLines(settings);
    settingsText = jsonText(settings);
    configuration.title = "the sample set";
    return true;
}

/// Zero for a text that the bridge rejects.
std::uint16_t usbId(const std::string& text) {
    return parseUsbId(text).value_or(0);
}

bool isIdentity(const std::string& text) {
    const auto bytes = bytesFromHex(text);
    return bytes && bytes->size() == HidProtocol::BoardId{}.size();
}

std::string identityOf(const PanelRole& panel, const OutputsConfig& outputs) {
    for (const DeviceEntry& entry : outputs.devices) {
        if (normalizeName(entry.role) == panel.role && isIdentity(entry.boardId)) {
            return entry.boardId;
        }
    }
    return panel.identity;
}

} // namespace

bool loadCockpitConfiguration(const std::string& path, CockpitConfiguration& configuration, std::string& error) {
    if (path.empty()) {
        return loadSample(configuration, error);
    }
    try {
        if (loadFromFiles(path, configuration, error)) {
            return true;
        }
    } catch (const std::filesystem::filesystem_error& failure) {
        error = failure.what();
    }
    error = path + ": " + error;
    return false;
}

VirtualBoardModel configuredBoard(const CockpitConfiguration& configuration, const std::string& deviceName) {
    VirtualBoardModel model;
    model.vendorId = usbId(configuration.settings.hid.vid);
    model.productId = usbId(configuration.settings.hid.pid);
    if (isIdentity(deviceName)) {
        std::ranges::copy(*bytesFromHex(deviceName), model.boardId->begin());
    } else {
        model.boardId.reset();
        model.serial = deviceName;
    }
    return model;
}

std::vector<RigBoard> configuredPanels(const CockpitConfiguration& configuration) {
    std::vector<RigBoard> boards;
    for (const PanelRole& panel : panelRoles) {
        const std::string identity = identityOf(panel, configuration.settings.outputs);
        boards.push_back({panel.role, configuredBoard(configuration, identity)});
    }
    return boards;
}

RigSettings cockpitRig(const CockpitConfiguration& configuration, std::vector<RigBoard> boards, const Pace& pace,
                       RigSides sides) {
    RigSettings settings;
    settings.boards = std::move(boards);
    settings.files = configuration.files;
    settings.pace = pace;
    settings.sides = sides;
    return settings;
}
