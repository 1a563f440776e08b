#pragma once

#include "companion/setup/bridge_control.h"
#include "companion/setup/edited_configuration.h"
#include "companion/setup/registration.h"
#include "companion/trial/module_link.h"
#include "hid/hid_protocol.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A board that is connected.
struct ShownBoard {
    std::string name;
    int index = -1;
    bool isVirtual = false;
    /// Empty if it has none there.
    std::string configuredRole;
    /// That of its last event; the configured one before its first.
    std::string role;
    /// Of a virtual one, if it has received one.
    std::optional<LedCommand> light{};

    bool operator==(const ShownBoard&) const = default;
};

/// How far a first configuration has come.
struct SetupProgress {
    /// There was no configuration when the page was opened.
    bool isFirst = false;
    bool pressed = false;
    bool assigned = false;
    bool tried = false;
    bool saved = false;

    bool operator==(const SetupProgress&) const = default;
};

/// What changes by itself on the machine.
struct SetupSurroundings {
    std::vector<RegistrationPlace> places;
    bool bridgeExists = false;
    std::optional<RunningBridge> bridge;
    /// This program has started it.
    bool bridgeIsOurs = false;
    /// The simulator that commands are tried with.
    LinkState simulator = LinkState::Starting;
    /// Why the files can't be saved any more; empty if they can.
    std::string changedOnDisk;

    bool operator==(const SetupSurroundings&) const = default;
};

/// What the page shows.
struct SetupState {
    /// Each change makes a new one. Never null.
    std::shared_ptr<const EditedConfiguration> configuration;
    std::vector<ShownBoard> boards;
    /// The controls that were used since the program was started, and whether each was turned.
    std::map<std::int32_t, bool> used;
    SetupProgress progress;
    SetupSurroundings surroundings;
    std::string bridgeProgram;
    /// One that another program has started.
    std::string howBridgeEnds;
    /// The one that commands are tried with.
    bool simulatorIsVirtual = true;

    bool operator==(const SetupState&) const = default;
};

/// What to say of the simulator, such as "is ready" or "doesn't run".
const char* linkStateText(LinkState link);

/// One line of JSON.
std::string stateJson(const SetupState& state);

/// What saving would write: for each changed file its path and the lines of the comparison.
std::string differenceJson(const EditedConfiguration& configuration);

/// Changes of files that aren't part of the configuration, in the same form.
std::string changesJson(const std::vector<RegistrationChange>& changes);

/// All known events with their descriptions, and the sample set's names of controls.
std::string catalogueJson();

/// What is wrong with a command.
std::string remarksJson(const std::string& command);
