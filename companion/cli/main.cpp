#include "companion/cli/commands.h"
#include "companion/cli/exit_code.h"
#include "platform/platform.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>

namespace {

int runCommand(int argc, char** argv) {
    const Platform platform = systemPlatform();
    CLI::App program("Sets up, checks and tries VantrelBridgeHID", "vantrel");
    program.set_version_flag("--version", "vantrel " VANTREL_VERSION);
    program.require_subcommand(1);
    program.footer("\"vantrel check --help\" explains a command.\n"
                   "Exit code: 0 all is well, 1 something was found, 2 wrong usage, 3 nothing to look at.\n"
                   "Examples:\n"
                   "  vantrel setup\n"
                   "  vantrel doctor\n"
                   "  vantrel boards --all\n"
                   "  vantrel watch\n"
                   "  vantrel demo");
    const Commands commands(program, platform);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return program.exit(error, std::cout, std::cerr) == 0 ? ExitCode::good : ExitCode::wrongUsage;
    }
    return commands.run(std::cout, std::cerr);
}

} // namespace

int main(int argc, char** argv) {
    try {
        return runCommand(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "vantrel: " << error.what() << '\n';
        return ExitCode::couldNotLook;
    }
}
