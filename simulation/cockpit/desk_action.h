#pragma once

#include "config/json.h"

#include <cstdint>
#include <string>

enum class DeskDeed {
    // On a board.
    Press,
    Release,
    Turn,
    Plug,
    Unplug,
    // On the simulator.
    StartSimulator,
    QuitSimulator,
    CrashSimulator,
    DropSessions,
    RefuseSessions,
    SilenceModule,
    FailRegistrations,
    SwitchBattery,
    SetLight,
    // On the bridge.
    StartBridge,
    StopBridge,
};

/// Something that the page asks for, with the members that its deed needs.
struct DeskAction {
    DeskDeed deed = DeskDeed::Press;
    std::string board;
    std::uint16_t control = 0;
    std::int8_t detents = 0;
    std::uint8_t speed = 0;
    bool on = false;
    std::int32_t percent = 0;

    bool operator==(const DeskAction&) const = default;
};

bool concernsBoard(DeskDeed deed);
bool concernsSimulator(DeskDeed deed);

/// Reads {"do": "press", "board": "PFD", "control": 5} and its like. False with the reason in `error`.
bool readDeskAction(const JsonValue& json, DeskAction& action, std::string& error);
