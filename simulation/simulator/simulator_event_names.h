#pragma once

#include <string_view>

/// Whether the simulator has an event of that name, in any case. Custom events, whose names hold a dot, and numbers of
/// events ("#65752") aren't names of the simulator's.
bool isSimulatorEvent(std::string_view name);
