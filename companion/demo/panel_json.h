#pragma once

#include "companion/demo/cockpit_configuration.h"
#include "config/json.h"
#include "hid/hid_log_lines.h"
#include "simulation/boards/virtual_board.h"

#include <string>

// What the page gets about boards, as JSON.

/// The controls that the event map names, in the order of their numbers: id, name, kind ("button" or "knob"), whether
/// the command file lists it, and its commands by action for a panel of the role.
JsonValue panelControls(const CockpitConfiguration& configuration, const std::string& role);

/// What a board received last: its light (null before the first report) as a record and as text, and the simulator's
/// state (null before the first report).
JsonValue boardState(const VirtualBoard& board);

/// What the bridge did with an event: its action and its control's name, either may be empty, and whether it fired a
/// simulator event or queued a command.
JsonValue eventRecord(const HidEventLine& event);

/// The simulator's controls that the page offers: word, label and help.
JsonValue simulatorControlLabels();

JsonValue jsonBool(bool value);
