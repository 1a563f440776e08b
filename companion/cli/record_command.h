#pragma once

#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>
#include <string>

/// `vantrel record`: writes down what the boards send.
class RecordCommand {
public:
    /// Adds the subcommand with its options to the program.
    RecordCommand(CLI::App& program, const Platform& platform);

    bool isChosen() const { return command->parsed(); }

    /// Records until Ctrl+C, and gives the exit code.
    int run(std::ostream& out, std::ostream& err) const;

private:
    const Platform& platform;
    CLI::App* command;
    std::string configPath;
    std::string file;
    bool force = false;

    bool mayWrite(std::ostream& err) const;
};
