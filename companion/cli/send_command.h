#pragma once

#include "companion/cli/module_session.h"
#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>
#include <string>

/// `vantrel send`: sends one command to the simulator.
class SendCommand {
public:
    /// Adds the subcommand with its options to the program.
    SendCommand(CLI::App& program, const Platform& platform);

    bool isChosen() const { return command->parsed(); }

    /// Sends the command, waits until the module has taken it, and gives the exit code.
    int run(std::ostream& out, std::ostream& err) const;

private:
    const Platform& platform;
    CLI::App* command;
    ModuleSession session;
    std::string rpn;
};
