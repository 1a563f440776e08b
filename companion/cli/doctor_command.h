#pragma once

#include "companion/doctor/check_result_text.h"
#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>
#include <string>

/// `vantrel doctor`: looks at this machine.
class DoctorCommand {
public:
    /// Adds the subcommand with its options to the program.
    DoctorCommand(CLI::App& program, const Platform& platform);

    bool isChosen() const { return command->parsed(); }

    /// Prints the answers and gives the exit code.
    int run(std::ostream& out, TextStyle style) const;

private:
    const Platform& platform;
    CLI::App* command;
    std::string configPath;
    bool json = false;
};
