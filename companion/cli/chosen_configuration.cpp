#include "companion/cli/chosen_configuration.h"

#include "app/app_paths.h"

#include <ostream>

void addConfigOption(CLI::App& command, std::string& path) {
    command.add_option("--config", path, "The config.json to use (default: the one that the bridge finds)")
        ->type_name("PATH");
}

std::string chosenConfigPath(const Host& host, const std::string& path) {
    return path.empty() ? defaultConfigPath(host) : path;
}

std::shared_ptr<const BridgeConfiguration> chosenConfiguration(const Host& host, const std::string& path,
                                                               std::ostream& err) {
    const auto configuration = std::make_shared<BridgeConfiguration>();
    std::string error;
    if (!loadBridgeConfiguration(chosenConfigPath(host, path), *configuration, error)) {
        err << "vantrel: " << error << "\n\"vantrel check\" says where the configuration is wrong.\n";
        return nullptr;
    }
    if (!configuration->eventMapProblem.empty()) {
        err << "Controls have no names: " << configuration->eventMapProblem << '\n';
    }
    return configuration;
}
