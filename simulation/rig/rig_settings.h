#pragma once

#include "simulation/boards/virtual_board.h"
#include "simulation/rig/pace.h"

#include <map>
#include <string>
#include <vector>

struct RigBoard {
    std::string name;
    VirtualBoardModel model;
    /// Where its path sorts among the boards' paths.
    std::string port = "port";
};

/// Which side of the bridge is this machine's own instead of a virtual one.
struct RigSides {
    bool realBoards = false;
    bool realSimulator = false;
};

/// What a BridgeRig is made of.
struct RigSettings {
    std::vector<RigBoard> boards;
    /// The bridge's configuration files by name, one of them "config.json".
    std::map<std::string, std::string> files;
    bool consoleMode = false;
    /// Whether the bridge is notified of boards that come and go, beside its own scan.
    bool hotPlugNotifications = true;
    /// False: the simulator runs without the module until somebody starts it.
    bool moduleInstalled = true;
    /// Whether starting the bridge and plugging or pulling a board wait until the bridge has noticed: a report that a
    /// board sends before somebody reads it is lost, and a pulled board that the bridge still writes to gives a
    /// warning.
    bool waitsForBridge = true;
    Pace pace = Pace::real();
    RigSides sides;
};
