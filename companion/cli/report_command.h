#pragma once

#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>
#include <string>

/// `vantrel report`: packs what a bug report needs.
class ReportCommand {
public:
    /// Adds the subcommand with its options to the program. `version`: the program's.
    ReportCommand(CLI::App& program, const Platform& platform, std::string version);

    bool isChosen() const { return command->parsed(); }

    /// Writes the archive, prints what it holds, and gives the exit code.
    int run(std::ostream& out, std::ostream& err) const;

private:
    const Platform& platform;
    std::string version;
    CLI::App* command;
    std::string path;
    std::string configPath;
};
