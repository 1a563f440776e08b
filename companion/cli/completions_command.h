#pragma once

#include <CLI/App.hpp>

#include <iosfwd>
#include <string>

/// `vantrel completions`: prints a script with which a shell completes the program's arguments.
class CompletionsCommand {
public:
    /// Adds the subcommand to the program, whose commands and options the script has. The program outlives this.
    explicit CompletionsCommand(CLI::App& program);

    bool isChosen() const { return command->parsed(); }

    /// Prints the script and gives the exit code.
    int run(std::ostream& out) const;

private:
    const CLI::App& program;
    CLI::App* command;
    std::string shell;
};
