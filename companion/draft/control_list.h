#pragma once

#include "companion/draft/configuration_texts.h"

#include <cstdint>
#include <string>
#include <vector>

/// A command of a control, with the action and the role normalised.
struct ListedCommand {
    std::string action;
    std::string role;
    std::string command;

    bool operator==(const ListedCommand&) const = default;
};

/// A control that a configuration names.
struct ListedControl {
    std::int32_t number = 0;
    std::string name;
    /// It is among the knobs of the command file, or has a command for turns.
    bool isKnob = false;
    /// In the order of the file; of two for the same action and role, the one that counts.
    std::vector<ListedCommand> commands;

    bool operator==(const ListedControl&) const = default;
};

/// The controls that have a name, by number. Only what the bridge could read of the texts counts.
std::vector<ListedControl> listControls(const ConfigurationTexts& texts);
