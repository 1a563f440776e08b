#pragma once

#include "simulation/cockpit/command_line.h"

#include <ostream>

/// Sends what the boards of a trace log sent again, and prints what comes of it. Gives the program's exit code: 0 when
/// every report was played.
int runReplay(const CockpitOptions& options, std::ostream& screen);
