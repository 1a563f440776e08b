#pragma once

#include "simulation/scenarios/scenario_file.h"
#include "simulation/scenarios/scenario_line.h"

#include <cstddef>

/// Reads a line that begins with "<", whose "<" is read, but for "< nothing". Throws a ScenarioFault.
ScenarioExpectation parseExpectation(ScenarioLine& line, const Scenario& scenario, std::size_t lineNumber);
