#pragma once

#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>
#include <string>

/// `vantrel boards`: lists the boards and what is known of them.
class BoardsCommand {
public:
    /// Adds the subcommand with its options to the program.
    BoardsCommand(CLI::App& program, const Platform& platform);

    bool isChosen() const { return command->parsed(); }

    /// Prints the list and gives the exit code: findings if no board of the configuration is there.
    int run(std::ostream& out, std::ostream& err) const;

private:
    const Platform& platform;
    CLI::App* command;
    std::string configPath;
    bool all = false;
    bool json = false;
};
