#pragma once

#include "simulation/scenarios/scenario_file.h"
#include "simulation/scenarios/scenario_line.h"

#include <cstddef>

/// Reads a line that begins with ">", whose ">" is read. Throws a ScenarioFault.
ScenarioInput parseInput(ScenarioLine& line, const Scenario& scenario, std::size_t lineNumber);
