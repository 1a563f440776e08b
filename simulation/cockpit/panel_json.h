#pragma once

#include "config/json.h"
#include "simulation/boards/virtual_board.h"
#include "simulation/cockpit/cockpit_configuration.h"

#include <string>

// What the page is told of boards, as JSON.

/// The controls that the event map names, in the order of their numbers: id, name, kind ("button" or "knob"), whether
/// the command file lists it, and its commands by action for a panel of the role.
JsonValue panelControls(const CockpitConfiguration& configuration, const std::string& role);

/// What a board was told last: its light (null before the first report) as a record and as text, and the simulator's
/// state (null before the first report).
JsonValue boardState(const VirtualBoard& board);

JsonValue jsonBool(bool value);
