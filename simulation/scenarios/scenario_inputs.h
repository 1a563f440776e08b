#pragma once

#include "simulation/scenarios/scenario_file.h"
#include "simulation/scenarios/scenario_line.h"

#include <cstddef>

/// Reads the rest of a line after its ">". Throws a ScenarioFault.
ScenarioInput parseInput(ScenarioLine& line, const Scenario& scenario, std::size_t lineNumber);
