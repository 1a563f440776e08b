#pragma once

#include "simulation/scenarios/scenario_file.h"
#include "simulation/scenarios/scenario_line.h"

#include <cstddef>

/// Reads the rest of a line after its "<", except "< nothing". Throws a ScenarioFault.
ScenarioExpectation parseExpectation(ScenarioLine& line, const Scenario& scenario, std::size_t lineNumber);
