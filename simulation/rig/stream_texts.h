#pragma once

// What boards and simulator receive, in words: the same text in expectations, comparisons and live columns.

#include "hid/hid_protocol.h"
#include "simulation/boards/virtual_board.h"
#include "simulation/simulator/virtual_simulator.h"

#include <optional>
#include <string>

/// "steady 80", "flash count=4 period=150 level=100", "none".
std::string ledText(const LedCommand& command);

/// "led steady 80", "status connected", "bootsel", or the bytes of a report that no board understands.
std::string outputText(const BoardOutput& output);

/// "rpn (>K:AP_MASTER)", "event AP_MASTER", "command MF.SimVars.Clear", "opened VantrelBridgeHID". None for a new
/// connection, which no scenario compares.
std::optional<std::string> recordText(const SimulatorRecord& record);
