#pragma once

#include "companion/cli/module_session.h"
#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>
#include <string>

/// `vantrel value`: reads one value of the simulator's.
class ValueCommand {
public:
    /// Adds the subcommand with its options to the program.
    ValueCommand(CLI::App& program, const Platform& platform);

    bool isChosen() const { return command->parsed(); }

    /// Prints the value and gives the exit code.
    int run(std::ostream& out, std::ostream& err) const;

private:
    const Platform& platform;
    CLI::App* command;
    ModuleSession session;
    std::string expression;
};
