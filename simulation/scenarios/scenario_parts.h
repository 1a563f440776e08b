#pragma once

// The readers of a scenario's lines. Each takes a line whose first word it has read, and throws a ScenarioFault.

#include "simulation/scenarios/scenario_file.h"
#include "simulation/scenarios/scenario_line.h"

/// A line that begins with ">".
ScenarioInput parseInput(ScenarioLine& line, const Scenario& scenario, std::size_t lineNumber);

/// A line that begins with "<", but for "< nothing".
ScenarioExpectation parseExpectation(ScenarioLine& line, const Scenario& scenario, std::size_t lineNumber);

/// The board's place among the scenario's, or a failure that names those that there are.
const ScenarioBoard& needBoard(ScenarioLine& line, const Scenario& scenario, const std::string& name);

/// What follows "board".
ScenarioBoard parseBoard(ScenarioLine& line, std::size_t position);
