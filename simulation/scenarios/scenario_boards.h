#pragma once

#include "simulation/scenarios/scenario_file.h"
#include "simulation/scenarios/scenario_line.h"

#include <cstddef>
#include <string>

/// Reads what follows "board"; `position` counts the scenario's boards from 1. Throws a ScenarioFault.
RigBoard parseBoard(ScenarioLine& line, std::size_t position);

/// The scenario's board of that name. Throws a ScenarioFault that lists the existing boards.
const RigBoard& needBoard(ScenarioLine& line, const Scenario& scenario, const std::string& name);
