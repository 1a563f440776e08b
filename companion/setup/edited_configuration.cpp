#include "companion/setup/edited_configuration.h"

#include <algorithm>

namespace {

std::shared_ptr<const BridgeConfiguration> readAsBridge(const ConfigurationPaths& paths,
                                                        const ConfigurationTexts& texts) {
    auto configuration = std::make_shared<BridgeConfiguration>();
    std::string ignored;
    parseAppConfig(texts[ConfigurationPart::Settings], paths[ConfigurationPart::Settings], configuration->settings,
                   ignored);
    configuration->eventMap.parse(texts[ConfigurationPart::EventMap], ignored);
    configuration->buttons.parse(texts[ConfigurationPart::Commands], ignored);
    return configuration;
}

} // namespace

EditedConfiguration::EditedConfiguration(const std::string& configPath) : diskFiles(configPath) {
    reload();
}

void EditedConfiguration::reload() {
    problemText.clear();
    edited.reset();
    if (diskFiles.read(problemText)) {
        edited.emplace(diskFiles.paths(), diskFiles.texts());
        judge();
    }
}

void EditedConfiguration::judge() {
    listed = listControls(edited->texts());
    judged = edited->verdict();
    read = readAsBridge(diskFiles.paths(), edited->texts());
}

bool EditedConfiguration::change(const Edit& edit, std::string& error) {
    if (!edited) {
        error = problemText;
        return false;
    }
    const bool done = edit(*edited, error);
    judge();
    return done;
}

bool EditedConfiguration::save(std::string& error) {
    if (!edited) {
        error = problemText;
        return false;
    }
    return diskFiles.save(edited->texts(), error);
}

bool EditedConfiguration::isChanged() const {
    return edited && std::ranges::any_of(configurationParts, [this](ConfigurationPart part) {
               return diskFiles.wouldWrite(part, edited->texts());
           });
}

bool EditedConfiguration::hasUnsavedChanges() const {
    return isChanged() && (diskFiles.exist() || edited->canUndo());
}
