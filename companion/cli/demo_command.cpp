#include "companion/cli/demo_command.h"

#include "companion/cli/exit_code.h"
#include "companion/demo/script_mode.h"

#include <CLI/CLI.hpp>

#include <limits>
#include <ostream>

DemoCommand::DemoCommand(CLI::App& program)
    : command(program.add_subcommand("demo", "Show the whole bridge on virtual boards and a virtual simulator")) {
    addPageOptions();
    addPlayedFiles();
    command->footer(
        "Without --script and --replay, a page for the browser of this machine shows them until Ctrl+C.\n"
        "Exit code: 0 all was played, 1 a scenario failed or a log's line wasn't played, 2 wrong usage, 3 the page\n"
        "can't be shown, or a file can't be used.\n"
        "Examples:\n"
        "  vantrel demo\n"
        "  vantrel demo --config panels/config.json --port 8100\n"
        "  vantrel demo --script demo-flight.scenario\n"
        "  vantrel demo --replay VantrelBridgeHID.log --fast");
}

void DemoCommand::addPageOptions() {
    command->add_option("--config", page.configPath, "The bridge's config.json (default: the sample set)")
        ->type_name("PATH");
    command->add_option("--port", page.port, "The page's port (default: 8080 or the next free one)")
        ->type_name("N")
        ->check(CLI::Range(0, static_cast<int>(std::numeric_limits<std::uint16_t>::max())));
    command->add_flag("--no-browser", noBrowser, "Don't open a browser");
    CLI::Option* const realBoards =
        command->add_flag("--real-boards", page.sides.realBoards, "This machine's boards in place of the virtual ones");
    command
        ->add_flag("--real-simulator", page.sides.realSimulator, "This machine's simulator in place of the virtual one")
        ->excludes(realBoards);
}

void DemoCommand::addPlayedFiles() {
    CLI::Option* const script = command->add_option("--script", scripts, "Play scenarios instead of showing a page");
    script->type_name("FILE")->excludes("--config");
    CLI::Option* const log =
        command->add_option("--replay", replay.log, "Send again what the boards of a trace log (--hid-trace) sent");
    log->type_name("LOG")->excludes(script);
    for (CLI::Option* const played : {script, log}) {
        played->excludes("--port", "--real-boards", "--real-simulator");
    }
    command->add_flag("--fast", replay.fast, "Play without the pauses that let a person follow");
    command->final_callback([this, log] {
        if (replay.fast && scripts.empty() && log->empty()) {
            throw CLI::RequiresError("--fast", "--script or --replay");
        }
    });
}

int DemoCommand::run(std::ostream& screen, std::ostream& err) const {
    std::string error;
    PlayOutcome outcome = PlayOutcome::AsExpected;
    if (!scripts.empty()) {
        outcome = runScripts(scripts, replay.fast, screen, error);
    } else if (!replay.log.empty()) {
        outcome = runReplay({replay.log, page.configPath, replay.fast}, screen, error);
    } else {
        return showPage(screen, err);
    }
    if (outcome == PlayOutcome::NotPlayed) {
        err << "vantrel: " << error << '\n';
        return ExitCode::couldNotLook;
    }
    return outcome == PlayOutcome::AsExpected ? ExitCode::good : ExitCode::findings;
}

int DemoCommand::showPage(std::ostream& screen, std::ostream& err) const {
    CockpitPageOptions options = page;
    options.inBrowser = !noBrowser;
    std::string error;
    if (!runCockpitPage(options, screen, error)) {
        err << "vantrel: " << error << '\n';
        return ExitCode::couldNotLook;
    }
    return ExitCode::good;
}
