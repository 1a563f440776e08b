#pragma once

#include "companion/setup/setup_page.h"
#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>

/// `vantrel setup`: sets up boards and commands on a page.
class SetupCommand {
public:
    /// Adds the subcommand with its options to the program.
    SetupCommand(CLI::App& program, const Platform& platform);

    bool isChosen() const { return command->parsed(); }

    /// Shows the page until the program is interrupted and gives the exit code.
    int run(std::ostream& screen, std::ostream& err) const;

private:
    const Platform& platform;
    CLI::App* command;
    SetupPageOptions page;
    bool noBrowser = false;
};
