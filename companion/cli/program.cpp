#include "companion/cli/program.h"

#include "companion/cli/commands.h"
#include "companion/cli/exit_code.h"
#include "companion/report/companion_name.h"

#include <CLI/CLI.hpp>

#include <ostream>

namespace {

/// Prints what is wrong with the arguments, or the help that they ask for.
int refuse(const CLI::App& program, const CLI::ParseError& error, std::ostream& out, std::ostream& err) {
    const bool isHelp = error.get_exit_code() == 0;
    // For a misspelt command, the library only says that one is missing.
    if (!isHelp && program.get_subcommands().empty() && program.remaining_size() > 0) {
        err << "vantrel: there is no command or option \"" << program.remaining().front()
            << "\"; \"vantrel --help\" lists them\n";
    } else {
        program.exit(error, out, err);
    }
    return isHelp ? ExitCode::good : ExitCode::wrongUsage;
}

} // namespace

int runVantrel(const Platform& platform, int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
    CLI::App program("Sets up, checks and tries VantrelBridgeHID", companionName);
    program.set_version_flag("--version", "vantrel " VANTREL_VERSION);
    program.require_subcommand(1);
    program.footer("\"vantrel check --help\" explains a command.\n"
                   "Exit code: 0 all is well, 1 something was found, 2 wrong usage, 3 it couldn't do its work.\n"
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
        return refuse(program, error, out, err);
    }
    return commands.run(out, err);
}
