#include "companion/cli/completions_command.h"

#include "companion/cli/completion_script.h"
#include "companion/cli/completion_words.h"
#include "companion/cli/exit_code.h"

#include <CLI/CLI.hpp>

#include <ostream>

CompletionsCommand::CompletionsCommand(CLI::App& program)
    : program(program),
      command(program.add_subcommand("completions", "Print a script with which a shell completes the arguments")) {
    command->add_option("SHELL", shell, "bash, zsh or fish")->required()->check(CLI::IsMember({"bash", "zsh", "fish"}));
    command->footer("The packages for Linux install these scripts.\n"
                    "Exit code: 0 printed, 2 wrong usage.\n"
                    "Example:\n"
                    "  vantrel completions bash > ~/.local/share/bash-completion/completions/vantrel");
}

int CompletionsCommand::run(std::ostream& out) const {
    out << completionScript(shell, completionWords(program));
    return ExitCode::good;
}
