#pragma once

#include "simulation/cockpit/command_line.h"

#include <ostream>

/// Sends the reports of a trace log's boards again and prints the result. Returns the program's exit code: 0 when every
/// report was played.
int runReplay(const CockpitOptions& options, std::ostream& screen);
