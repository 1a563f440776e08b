#pragma once

#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>
#include <string>

/// `vantrel watch`: shows what the boards send, and what the bridge does with it.
class WatchCommand {
public:
    /// Adds the subcommand with its options to the program.
    WatchCommand(CLI::App& program, const Platform& platform);

    bool isChosen() const { return command->parsed(); }

    /// Prints a line for each report until Ctrl+C, and gives the exit code.
    int run(std::ostream& out, std::ostream& err) const;

private:
    const Platform& platform;
    CLI::App* command;
    std::string configPath;
    bool raw = false;
};
