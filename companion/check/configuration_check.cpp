#include "companion/check/configuration_check.h"

#include "companion/check/bridge_errors.h"
#include "companion/check/button_check.h"
#include "companion/check/config_check.h"
#include "companion/check/event_map_check.h"
#include "companion/check/json_document.h"
#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "config/names.h"
#include "hid/usb_ids.h"
#include "platform/file_system.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

namespace {

/// The numbers for which the bridge has an autopilot event of the simulator, so that a control without a command works.
constexpr std::array<std::int32_t, 9> numbersWithEvents{5, 6, 7, 8, 9, 11, 12, 13, 16};

bool readIds(const HidConfig& hid, std::string& error) {
    const bool isReadable = parseUsbIds(hid.vid, hid.pid).has_value();
    if (!isReadable) {
        error = invalidUsbIds;
    }
    return isReadable;
}

/// One look at the files.
class ConfigurationCheck {
public:
    ConfigurationCheck(std::string path, const FileTextReader& read) : path(std::move(path)), read(read) {}

    ConfigurationVerdict run() {
        checkMainFile();
        if (namesOtherFiles()) {
            checkOtherFiles();
        }
        verdict.bridgeStarts = verdict.refusal.empty();
        mergeIntoErrors(verdict.findings);
        sortFindings(verdict.findings, verdict.files);
        return std::move(verdict);
    }

private:
    std::string path;
    const FileTextReader& read;
    ConfigurationVerdict verdict;
    AppConfig config;
    CommandContext context;
    ButtonConfig buttons;
    bool buttonsAreRead = false;
    HidEventMap eventMap;
    std::unique_ptr<JsonDocument> mainFile;

    void refuse(const std::string& message) {
        if (verdict.refusal.empty()) {
            verdict.refusal = message;
        }
    }

    /// A finding about a file that can't be read, at the setting that names it.
    void addUnreadable(std::string_view key, Severity severity, const std::string& message) {
        Finding place;
        place.file = path;
        place.severity = severity;
        place.code = "missing-file";
        if (mainFile != nullptr) {
            const JsonNode* const mappings = mainFile->root()->member("mappings");
            const JsonNode* const setting = mappings == nullptr ? nullptr : mappings->member(key);
            if (setting != nullptr) {
                place = mainFile->atValue(*setting, severity, "missing-file");
            }
        }
        addFinding(verdict.findings, std::move(place), message,
                   "Correct the path, put the file there, or check its permissions");
    }

    /// The file with the bridge's own errors reported; null when it isn't a JSON object.
    /// `accepted` gets the text with the errors repaired.
    std::unique_ptr<JsonDocument> readDocument(const std::string& file, std::string text, const BridgeReader& reader,
                                               std::string& accepted) {
        verdict.files.push_back(file);
        auto document = std::make_unique<JsonDocument>(file, std::move(text));
        for (Finding& finding : bridgeErrors(*document, reader, accepted)) {
            verdict.findings.push_back(std::move(finding));
        }
        const bool isObject = document->root() != nullptr && document->root()->isObject();
        return isObject ? std::move(document) : nullptr;
    }

    void checkMainFile() {
        std::optional<std::string> text = read(path);
        std::string error;
        AppConfig asWritten;
        if (!text) {
            loadAppConfig(path, asWritten, error);
            refuse(error);
            addUnreadable("", Severity::Error, verdict.refusal);
            return;
        }
        if (!parseAppConfig(*text, path, asWritten, error) || !readIds(asWritten.hid, error)) {
            refuse(error);
        }
        std::string accepted;
        const BridgeReader reader = [this](const std::string& changed, std::string& message) {
            AppConfig ignored;
            return parseAppConfig(changed, path, ignored, message);
        };
        mainFile = readDocument(path, std::move(*text), reader, accepted);
        if (mainFile != nullptr) {
            parseAppConfig(accepted, path, config, error);
            checkIds(*mainFile->root());
            checkConfig(*mainFile, verdict.findings);
            noteRoles();
        }
    }

    /// Whether the user names the command file. A repair of `config.json` may have made a name up.
    bool namesOtherFiles() const {
        const JsonNode* const mappings = mainFile == nullptr ? nullptr : mainFile->root()->member("mappings");
        const JsonNode* const setting = mappings == nullptr ? nullptr : mappings->member("buttonConfigPath");
        return setting != nullptr && setting->type() == JsonType::String && !setting->value.string.empty() &&
               !config.mappings.buttonConfigPath.empty();
    }

    void checkOtherFiles() {
        const std::unique_ptr<JsonDocument> map = checkMapFile();
        checkButtonFile();
        if (map != nullptr && buttonsAreRead) {
            checkControlsHaveCommands(*map);
        }
    }

    void checkIds(const JsonNode& root) {
        const JsonNode* const hid = root.member("hid");
        for (const std::string_view key : {"vid", "pid"}) {
            const JsonNode* const id = hid == nullptr ? nullptr : hid->member(key);
            if (id != nullptr && id->type() == JsonType::String && !id->value.string.empty()) {
                checkId(*id);
            }
        }
    }

    void checkId(const JsonNode& id) {
        const std::string hint = "Write up to four hexadecimal digits, such as \"16C0\"";
        if (!parseUsbId(id.value.string)) {
            addFinding(verdict.findings, mainFile->atValue(id, Severity::Error, "refused"), invalidUsbIds, hint);
        } else if (normalizeBoardId(id.value.string).find_first_not_of("0123456789ABCDEF") != std::string::npos) {
            addFinding(verdict.findings, mainFile->atValue(id, Severity::Warning, "odd-id"),
                       "the bridge only reads the digits up to the first other letter", hint);
        }
    }

    void noteRoles() {
        for (const DeviceEntry& device : config.outputs.devices) {
            context.roles.insert(normalizeName(device.role));
        }
        context.roles.erase("");
    }

    std::unique_ptr<JsonDocument> checkMapFile() {
        const std::string& file = config.mappings.hidEventMapPath;
        if (file.empty()) {
            addUnreadable("hidEventMapPath", Severity::Warning,
                          "the bridge finds no event map, so controls have no names and no commands");
            return nullptr;
        }
        std::optional<std::string> text = read(file);
        if (!text) {
            addUnreadable("hidEventMapPath", Severity::Warning, "the event map can't be read: " + file);
            return nullptr;
        }
        const BridgeReader reader = [](const std::string& changed, std::string& message) {
            return HidEventMap().parse(changed, message);
        };
        std::string accepted;
        std::string ignored;
        eventMap.parse(*text, ignored);
        std::unique_ptr<JsonDocument> document = readDocument(file, std::move(*text), reader, accepted);
        if (document != nullptr) {
            checkEventMap(*document, verdict.findings);
        }
        for (const auto& [number, name] : eventMap.controlIds) {
            context.controls.insert(normalizeName(name));
        }
        return document;
    }

    void checkButtonFile() {
        const std::string& file = config.mappings.buttonConfigPath;
        std::optional<std::string> text = read(file);
        std::string error;
        if (!text) {
            refuse("Button config can't be read: " + file);
            addUnreadable("buttonConfigPath", Severity::Error, "the command file can't be read: " + file);
            return;
        }
        buttonsAreRead = buttons.parse(*text, error);
        if (!buttonsAreRead) {
            refuse(error);
        }
        const BridgeReader reader = [](const std::string& changed, std::string& message) {
            return ButtonConfig().parse(changed, message);
        };
        std::string accepted;
        const std::unique_ptr<JsonDocument> document = readDocument(file, std::move(*text), reader, accepted);
        if (document != nullptr) {
            checkButtons(*document, context, verdict.findings);
        }
    }

    void checkControlsHaveCommands(const JsonDocument& document) {
        const JsonNode* const controls = document.root()->member("control_ids");
        for (const auto& [number, name] : eventMap.controlIds) {
            const bool works = std::ranges::find(numbersWithEvents, number) != numbersWithEvents.end();
            const JsonNode* const node = controls == nullptr ? nullptr : controls->member(name);
            if (!works && node != nullptr && !buttons.contains(normalizeName(name))) {
                addFinding(verdict.findings, document.atKey(*node, Severity::Hint, "control-without-command"),
                           "\"" + name + "\" has no command", "Add it to the command file");
            }
        }
    }
};

std::optional<std::string> textOnDisk(const std::string& file) {
    std::string text;
    const bool isRead = FileSystem::existsOrFalse(file) && FileSystem::readFile(file, text);
    return isRead ? std::optional(std::move(text)) : std::nullopt;
}

} // namespace

ConfigurationVerdict checkConfiguration(const std::string& path) {
    return checkConfiguration(path, textOnDisk);
}

ConfigurationVerdict checkConfiguration(const std::string& path, const FileTextReader& read) {
    return ConfigurationCheck(path, read).run();
}
