#pragma once

#include "config/json.h"

#include <cstdint>
#include <string>

enum class CockpitActionKind {
    // On a board.
    Press,
    Release,
    Turn,
    Plug,
    Unplug,
    /// On the simulator.
    ControlSimulator,
    // On the bridge.
    StartBridge,
    StopBridge,
};

/// Something that the page requests, with the members that its kind needs.
struct CockpitAction {
    CockpitActionKind kind = CockpitActionKind::Press;
    std::string board;
    std::uint16_t control = 0;
    std::int8_t detents = 0;
    std::uint8_t speed = 0;
    /// A line for the simulator's console, such as "battery off"; not checked yet.
    std::string command;

    bool operator==(const CockpitAction&) const = default;
};

bool concernsBoard(CockpitActionKind kind);

/// Reads {"do": "press", "board": "PFD", "control": 5}, {"do": "sim", "command": "battery off"} and the like. False
/// with the reason in `error`.
bool readCockpitAction(const JsonValue& json, CockpitAction& action, std::string& error);
