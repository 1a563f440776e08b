#include "companion/cli/setup_command.h"

#include "app/app_paths.h"
#include "companion/cli/exit_code.h"

#include <CLI/CLI.hpp>

#include <limits>
#include <ostream>

SetupCommand::SetupCommand(CLI::App& program, const Platform& platform)
    : platform(platform), command(program.add_subcommand("setup", "Set up boards and commands in the browser")) {
    constexpr int mostVirtualBoards = 8;
    command
        ->add_option("--config", page.setup.configPath,
                     "The config.json to edit or make (default: the one that the bridge finds)")
        ->type_name("PATH");
    command->add_option("--port", page.port, "The page's port (default: 8080 or the next free one)")
        ->type_name("N")
        ->check(CLI::Range(0, static_cast<int>(std::numeric_limits<std::uint16_t>::max())));
    command->add_flag("--no-browser", noBrowser, "Don't open a browser");
    command->add_option("--virtual-boards", page.setup.virtualBoards, "Begin with virtual boards, to try it out")
        ->type_name("N")
        ->check(CLI::Range(0, mostVirtualBoards));
    command->footer("The page is for the browser of this machine, until Ctrl+C. Your files change only when you\n"
                    "save, register, or agree to a repair. The bridge may run meanwhile.\n"
                    "Exit code: 0 after Ctrl+C, 2 wrong usage, 3 the page can't be shown.\n"
                    "Examples:\n"
                    "  vantrel setup\n"
                    "  vantrel setup --config panels/config.json --port 8100\n"
                    "  vantrel setup --virtual-boards 2");
}

int SetupCommand::run(std::ostream& screen, std::ostream& err) const {
    SetupPageOptions options = page;
    options.inBrowser = !noBrowser;
    if (options.setup.configPath.empty()) {
        options.setup.configPath = defaultConfigPath(platform.host);
    }
    std::string error;
    if (!runSetupPage(platform, options, screen, error)) {
        err << "vantrel: " << error << '\n';
        return ExitCode::couldNotLook;
    }
    return ExitCode::good;
}
