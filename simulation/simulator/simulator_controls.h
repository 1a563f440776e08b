#pragma once

#include "simulation/simulator/virtual_simulator.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

using SimulatorAction = std::function<void(VirtualSimulator& simulator)>;

struct SimulatorRequest;

/// One thing that can be done to the virtual simulator. The console of `virtual-simulator`, the scenarios' "> sim"
/// steps and the virtual cockpit's page take the same words, and all of their help comes from here.
struct SimulatorControl {
    std::string_view word;
    /// What follows the word, such as "on|off". Empty: nothing.
    std::string_view argument;
    std::string_view help;
    /// The control's name on the page. Empty: the page doesn't offer it.
    std::string_view label;
    /// What to do for this argument, which has no blanks around it. Null: the argument is wrong.
    SimulatorAction (*read)(std::string_view argument);
    /// The control changes the list of processes that the bridge sees. The program `virtual-simulator` is in the
    /// system's own list and can't change that, so there the action does nothing.
    bool rigOnly = false;

    /// "battery on|off".
    std::string usage() const;
    /// None when the argument is wrong.
    std::optional<SimulatorRequest> request(std::string_view givenArgument) const;
};

/// A control with a valid argument. It can be carried out now or later, any number of times.
struct SimulatorRequest {
    const SimulatorControl* control = nullptr;
    std::string argument;
    SimulatorAction action;
};

/// The table, in the order in which help lists it.
std::span<const SimulatorControl> simulatorControls();

/// Null for a word that isn't in the table.
const SimulatorControl* findSimulatorControl(std::string_view word);

/// Reads a whole line, such as "battery on". None with the reason in `error`.
std::optional<SimulatorRequest> readSimulatorRequest(std::string_view line, std::string& error);

/// None for a word that isn't one of `moduleAnswersWords`.
std::optional<ModuleAnswers> moduleAnswersOf(std::string_view word);
