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

/// Which side of the bridge is real, that is this machine's own, instead of virtual.
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
    /// False: the simulator runs without the module until a control starts it.
    bool moduleInstalled = true;
    /// Whether starting the bridge and plugging or pulling a board wait until the bridge has reacted: a report that a
    /// board sends before the bridge reads it is lost, and writing to a pulled board gives a warning.
    bool waitsForBridge = true;
    Pace pace = Pace::real();
    RigSides sides;
};
