#include "companion/cli/watch_command.h"

#include "companion/cli/chosen_configuration.h"
#include "companion/cli/exit_code.h"
#include "companion/cli/follow_boards.h"
#include "companion/live/live_text.h"

#include <CLI/CLI.hpp>

#include <atomic>
#include <ostream>

WatchCommand::WatchCommand(CLI::App& program, const Platform& platform)
    : platform(platform), command(program.add_subcommand("watch", "Show presses, and what the bridge does with them")) {
    addConfigOption(*command, configPath);
    command->add_flag("--raw", raw, "Show each report's bytes too");
    command->footer("Only watches: sends nothing to the boards or to the simulator. The bridge may run meanwhile.\n"
                    "Boards may come and go. Ctrl+C ends it.\n"
                    "Exit code: 0 ended by Ctrl+C, 2 wrong usage, 3 no usable configuration, or output that can't be\n"
                    "written.\n"
                    "Examples:\n"
                    "  vantrel watch\n"
                    "  vantrel watch --raw --config panels/config.json");
}

int WatchCommand::run(std::ostream& out, std::ostream& err) const {
    const auto configuration = chosenConfiguration(platform.host, configPath, err);
    if (!configuration) {
        return ExitCode::couldNotLook;
    }
    std::atomic<bool> failed{false};
    // Line by line, so that a pipe's reader sees each event at once.
    const auto print = [&](const std::string& text) { failed = failed || !(out << text << std::flush); };
    const std::int64_t begin = platform.host.now();
    LiveObserver observer;
    observer.arrived = [&](const LiveBoard& board) { print(arrivalText(board)); };
    observer.left = [&](const LiveBoard& board) { print("board " + board.name + " has gone\n"); };
    observer.reported = [&](const LiveReport& report) { print(reportText(report, begin, raw)); };
    const int code = followBoards(
        platform, configuration, observer, [] {}, failed, err);
    if (failed) {
        err << "vantrel: the output can't be written\n";
    }
    return code;
}
