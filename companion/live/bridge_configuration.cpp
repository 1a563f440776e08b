#include "companion/live/bridge_configuration.h"

bool loadBridgeConfiguration(const std::string& path, BridgeConfiguration& configuration, std::string& error) {
    if (!loadAppConfig(path, configuration.settings, error)) {
        return false;
    }
    const MappingsConfig& files = configuration.settings.mappings;
    if (!files.hidEventMapPath.empty()) {
        configuration.eventMap.load(files.hidEventMapPath, configuration.eventMapProblem);
    }
    return configuration.buttons.load(files.buttonConfigPath, error);
}
