#include "companion/cli/replay_command.h"

#include "companion/cli/chosen_configuration.h"
#include "companion/cli/exit_code.h"
#include "companion/interrupt/interrupt.h"
#include "companion/live/live_text.h"
#include "companion/trial/replay_shortfall.h"
#include "platform/file_system.h"
#include "text/wording.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <ostream>

namespace {

constexpr std::chrono::milliseconds longestStep{50};

std::string summary(const ReplayInput& input) {
    const auto sent = std::ranges::count_if(
        input.reports, [](const LiveReport& report) { return report.event && sendsAnything(report.event->answer); });
    return countText(input.reports.size(), "report") + "; the bridge sends something for " + std::to_string(sent) +
           '\n';
}

} // namespace

ReplayCommand::ReplayCommand(CLI::App& program, const Platform& platform)
    : platform(platform),
      command(program.add_subcommand("replay", "Show what the bridge does with a record")),
      session(*command, platform) {
    command->add_option("FILE", file, "A record, or a log of the bridge with --hid-trace")->required();
    command->add_flag("--raw", raw, "Show each report's bytes too");
    command->add_flag("--send", toSimulator, "Send the commands to the simulator, at the record's pace");
    command->footer("Uses the present configuration, not the one of the record, and needs neither boards nor, without\n"
                    "--send, a simulator.\n"
                    "Exit code: 0 all was played, 1 some lines can't be read, 2 wrong usage, 3 nothing to play, no\n"
                    "usable configuration, no simulator to send to, or not all was sent to it.\n"
                    "Examples:\n"
                    "  vantrel replay knob.scenario\n"
                    "  vantrel replay VantrelBridgeHID.log --config panels/config.json\n"
                    "  vantrel replay knob.scenario --send");
}

int ReplayCommand::run(std::ostream& out, std::ostream& err) const {
    const auto configuration = chosenConfiguration(platform.host, session.config(), err);
    ReplayInput input;
    if (!configuration || !read(*configuration, input, err)) {
        return ExitCode::couldNotLook;
    }
    if (toSimulator && !send(input, *configuration, out, err)) {
        return ExitCode::couldNotLook;
    }
    for (const LiveReport& report : input.reports) {
        out << (toSimulator ? "" : reportText(report, 0, raw));
    }
    out << summary(input);
    for (const std::string& problem : input.problems) {
        err << problem << '\n';
    }
    return input.problems.empty() ? ExitCode::good : ExitCode::findings;
}

bool ReplayCommand::read(const BridgeConfiguration& configuration, ReplayInput& input, std::ostream& err) const {
    std::string text;
    std::string error = file + ": can't be read";
    if (!FileSystem::readFile(file, text) || !readReplay(file, text, input, error)) {
        err << "vantrel: " << error << '\n';
        return false;
    }
    for (LiveReport& report : input.reports) {
        decodeReport(report, configuration);
    }
    return true;
}

bool ReplayCommand::send(const ReplayInput& input, const BridgeConfiguration& configuration, std::ostream& out,
                         std::ostream& err) const {
    ModuleLink link(platform.simConnect, platform.host);
    EventSender sender(platform.host, link, configuration);
    std::string error;
    if (!session.connect(link, err)) {
        return false;
    }
    if (!sender.start(error)) {
        err << "vantrel: " << error << '\n';
        return false;
    }
    const std::size_t played = play(input, link, sender, out);
    sender.finish(session.limit());
    // A module that has gone shows only in that it answers no more.
    const LinkState end = session.read(link, "1", error) ? LinkState::Ready : LinkState::ModuleSilent;
    const std::string shortfall = replayShortfall(played, input.reports.size(), Interrupt::requested(), end);
    err << (shortfall.empty() ? "" : "vantrel: " + shortfall + '\n');
    return shortfall.empty();
}

/// Until the end, Ctrl+C or the end of the session. Gives how many reports were played.
std::size_t ReplayCommand::play(const ReplayInput& input, const ModuleLink& link, EventSender& sender,
                                std::ostream& out) const {
    const std::int64_t begin = platform.host.now();
    std::size_t played = 0;
    for (const LiveReport& report : input.reports) {
        if (!sleepUntil(begin + report.time) || link.state() != LinkState::Ready) {
            break;
        }
        out << reportText(report, 0, raw) << std::flush;
        if (report.event) {
            sender.send(report.event->event, report.board, report.index);
        }
        ++played;
    }
    return played;
}

/// False: Ctrl+C was pressed before.
bool ReplayCommand::sleepUntil(std::int64_t time) const {
    std::int64_t left = time - platform.host.now();
    while (left > 0 && !Interrupt::requested()) {
        const auto step = std::chrono::ceil<std::chrono::milliseconds>(std::chrono::nanoseconds(left));
        platform.host.sleepFor(std::min(step, longestStep));
        left = time - platform.host.now();
    }
    return !Interrupt::requested();
}
