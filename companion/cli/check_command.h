#pragma once

#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>
#include <string>

/// `vantrel check`: judges the configuration.
class CheckCommand {
public:
    /// Adds the subcommand with its options to the program.
    CheckCommand(CLI::App& program, const Host& host);

    bool isChosen() const { return command->parsed(); }

    /// Prints the findings and gives the exit code.
    int run(std::ostream& out, std::ostream& err, bool colour) const;

private:
    const Host& host;
    CLI::App* command;
    std::string configPath;
    bool json = false;
};
