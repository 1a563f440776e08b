#include "companion/cli/boards_command.h"
#include "companion/cli/check_command.h"
#include "companion/cli/demo_command.h"
#include "companion/cli/exit_code.h"
#include "companion/cli/live_commands.h"
#include "companion/cli/setup_command.h"
#include "companion/cli/terminal.h"
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
                   "  vantrel check\n"
                   "  vantrel boards --all\n"
                   "  vantrel watch\n"
                   "  vantrel demo");
    const CheckCommand check(program, platform.host);
    const BoardsCommand boards(program, platform);
    const LiveCommands live(program, platform);
    const DemoCommand demo(program);
    const SetupCommand setup(program, platform);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return program.exit(error, std::cout, std::cerr) == 0 ? ExitCode::good : ExitCode::wrongUsage;
    }
    if (const auto code = live.run(std::cout, std::cerr)) {
        return *code;
    }
    if (demo.isChosen()) {
        // The program's own stream to the screen: the bridge uses std::cout while it runs in console mode.
        std::ostream screen(std::cout.rdbuf());
        return demo.run(screen, std::cerr);
    }
    if (setup.isChosen()) {
        return setup.run(std::cout, std::cerr);
    }
    return check.isChosen() ? check.run(std::cout, std::cerr, wantsColour(platform.host))
                            : boards.run(std::cout, std::cerr);
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
