#pragma once

#include "simulation/cockpit/command_line.h"

#include <ostream>

/// Shows the cockpit on a page until the program is interrupted. Returns the program's exit code.
int runPage(const CockpitOptions& options, std::ostream& screen);
