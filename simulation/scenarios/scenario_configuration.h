#pragma once

#include "simulation/scenarios/scenario_file.h"

#include <cstdint>
#include <string_view>

/// The scenario's settings, merged over the defaults of every scenario: the boards' vendor and product, the two other
/// files, DEBUG lines on, and no debounce.
JsonValue scenarioSettings(const Scenario& scenario);

/// A number from these settings; `otherwise` if there is none.
std::int32_t scenarioSetting(const Scenario& scenario, std::string_view section, std::string_view key,
                             std::int32_t otherwise);

/// The rig for the scenario, with its configuration files.
RigSettings rigSettings(const Scenario& scenario, const Pace& pace);
