#include "companion/draft/configuration_files.h"

#include "companion/check/json_document.h"
#include "config/app_config.h"
#include "platform/file_system.h"

#include <string_view>
#include <utility>
#include <vector>

namespace {

/// A path of the section "mappings"; empty if it isn't there.
std::string mappedPath(const JsonNode& root, const std::string& configPath, std::string_view key) {
    const JsonNode* const mappings = root.member("mappings");
    const JsonNode* const path = mappings == nullptr ? nullptr : mappings->member(key);
    return path == nullptr ? "" : resolveConfigPath(configPath, path->value.string);
}

std::string beside(const std::string& configPath, const std::string& name) {
    const std::string folder = FileSystem::parentPath(configPath);
    return folder.empty() ? name : FileSystem::join(folder, name);
}

} // namespace

ConfigurationFiles::ConfigurationFiles(std::string configPath, FileOperations operations)
    : operations(std::move(operations)) {
    filePaths[ConfigurationPart::EventMap] = beside(configPath, "hid_event_map.json");
    filePaths[ConfigurationPart::Commands] = beside(configPath, "buttons.json");
    filePaths[ConfigurationPart::Settings] = std::move(configPath);
}

bool ConfigurationFiles::read(std::string& error) {
    return readPart(ConfigurationPart::Settings, error) && (!exist() || findOtherFiles(error)) &&
           readPart(ConfigurationPart::EventMap, error) && readPart(ConfigurationPart::Commands, error);
}

bool ConfigurationFiles::readPart(ConfigurationPart part, std::string& error) {
    const std::string& path = filePaths[part];
    onDisk[part].reset();
    std::string text;
    if (FileSystem::readFile(path, text)) {
        onDisk[part] = std::move(text);
    } else if (FileSystem::existsOrFalse(path)) {
        error = path + " is there but can't be read. Check its permissions";
        return false;
    }
    return true;
}

bool ConfigurationFiles::findOtherFiles(std::string& error) {
    const std::string& configPath = filePaths[ConfigurationPart::Settings];
    const JsonDocument document(configPath, *onDisk[ConfigurationPart::Settings]);
    if (document.root() == nullptr) {
        error = configPath + " isn't JSON. \"vantrel check\" shows where; correct it in an editor";
        return false;
    }
    const std::string commands = mappedPath(*document.root(), configPath, "buttonConfigPath");
    const std::string eventMap = mappedPath(*document.root(), configPath, "hidEventMapPath");
    if (commands.empty()) {
        error = configPath + R"( names no command file. Add "mappings": {"buttonConfigPath": "buttons.json"})";
        return false;
    }
    filePaths[ConfigurationPart::Commands] = commands;
    if (!eventMap.empty()) {
        filePaths[ConfigurationPart::EventMap] = eventMap;
    }
    return true;
}

ConfigurationTexts ConfigurationFiles::texts() const {
    ConfigurationTexts texts = emptyTexts();
    for (const ConfigurationPart part : configurationParts) {
        texts[part] = onDisk[part].value_or(texts[part]);
    }
    return texts;
}

bool ConfigurationFiles::areUnchanged(std::string& error) const {
    for (const ConfigurationPart part : configurationParts) {
        std::string text;
        const bool isThere = FileSystem::readFile(filePaths[part], text);
        if (isThere != onDisk[part].has_value() || (isThere && text != onDisk[part])) {
            error = filePaths[part] + " was changed by another program since it was read here";
            return false;
        }
    }
    return true;
}

bool ConfigurationFiles::save(const ConfigurationTexts& texts, std::string& error) {
    if (!areUnchanged(error)) {
        error += ". Nothing was written";
        return false;
    }
    std::vector<FileReplacement> replacements;
    for (const ConfigurationPart part : configurationParts) {
        if (wouldWrite(part, texts)) {
            replacements.push_back({filePaths[part], texts[part], onDisk[part].has_value()});
        }
    }
    if (!replaceFiles(replacements, operations, error)) {
        return false;
    }
    for (const ConfigurationPart part : configurationParts) {
        onDisk[part] = texts[part];
    }
    return true;
}
