#pragma once

#include "simulation/scenarios/scenario_file.h"

#include <string>

/// The scenario's settings laid over those that every scenario begins with: the boards' vendor and product, the two
/// other files, DEBUG lines on, and no debounce.
JsonValue scenarioSettings(const Scenario& scenario);

/// Writes the scenario's configuration files into a folder and gives the path of config.json.
std::string writeConfiguration(const Scenario& scenario, const std::string& folder);
