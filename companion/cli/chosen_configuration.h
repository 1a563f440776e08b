#pragma once

#include "companion/live/bridge_configuration.h"
#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>
#include <memory>
#include <string>

/// Adds the option --config to a command that uses the bridge's configuration.
void addConfigOption(CLI::App& command, std::string& path);

/// `path`, or for an empty one the path of the configuration that the bridge finds.
std::string chosenConfigPath(const Host& host, const std::string& path);

/// The configuration at `path`, or for an empty path the one that the bridge finds. Null, with the reason and a remedy
/// in `err`, if the bridge wouldn't start with it. Also says there why controls have no names.
std::shared_ptr<const BridgeConfiguration> chosenConfiguration(const Host& host, const std::string& path,
                                                               std::ostream& err);
