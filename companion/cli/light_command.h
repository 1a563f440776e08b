#pragma once

#include "platform/platform.h"

#include <CLI/App.hpp>

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

/// `vantrel light`: shows a light on a board.
class LightCommand {
public:
    /// Adds the subcommand with its options to the program.
    LightCommand(CLI::App& program, const Platform& platform);

    bool isChosen() const { return command->parsed(); }

    /// Writes one report to the board and gives the exit code.
    int run(std::ostream& out, std::ostream& err) const;

private:
    const Platform& platform;
    CLI::App* command;
    std::string configPath;
    std::string board;
    std::string effect;
    std::optional<std::int32_t> percent;
};
