#include "companion/demo/replay_mode.h"

#include "companion/demo/cockpit_configuration.h"
#include "companion/recording/hid_log.h"
#include "companion/recording/report_words.h"
#include "hid/hid_log_lines.h"
#include "hid/hid_protocol.h"
#include "platform/file_system.h"
#include "simulation/rig/rig_observer.h"
#include "simulation/scenarios/side_by_side.h"
#include "text/wording.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <string_view>
#include <utility>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// How long a session with its handshake may take.
constexpr std::chrono::milliseconds sessionLimit = 30000ms;
/// How long the bridge may take to fetch a report from a board.
constexpr std::chrono::milliseconds reportLimit = 30000ms;
/// How long the bridge may need for an event, and the simulator for its command.
constexpr std::chrono::milliseconds eventLimit = 2000ms;
/// After this time without anything new, everything has come, except commands that the configuration spaces further
/// apart.
constexpr std::chrono::milliseconds quietTime = 400ms;
/// A button that the log leaves pressed repeats its command forever.
constexpr std::chrono::milliseconds quietLimit = 3000ms;

/// What the last line of a session's start begins with.
std::string_view sessionEnd(const CockpitConfiguration& configuration) {
    return configuration.settings.mobiflight.enabled ? "command MF.SimVars.Add." : "opened ";
}

std::vector<RigBoard> loggedBoards(const CockpitConfiguration& configuration, const HidLog& log) {
    std::vector<RigBoard> boards;
    for (const std::string& device : log.devices) {
        boards.push_back({device, configuredBoard(configuration, device)});
    }
    return boards;
}

std::string controlName(const HidEventMap& eventMap, std::uint16_t number) {
    const auto found = eventMap.controlIds.find(number);
    return found == eventMap.controlIds.end() ? std::to_string(number) : found->second;
}

/// Plays one log on a cockpit of its own.
class Replay {
public:
    Replay(const CockpitConfiguration& configuration, const HidLog& log, bool fast, std::ostream& screen)
        : configuration(configuration),
          log(log),
          fast(fast),
          screen(screen),
          columns(screen),
          rig(cockpitRig(configuration, loggedBoards(configuration, log), fast ? Pace::fast() : Pace::real())),
          observer(rig, [this](const Observation& item) { return take(item); }) {}

    bool play() {
        if (!connect()) {
            return false;
        }
        const Clock::time_point begin = Clock::now();
        for (const HidLogReport& report : log.reports) {
            if (!fast) {
                observer.pumpFor(
                    std::chrono::duration_cast<std::chrono::milliseconds>(begin + report.offset - Clock::now()));
            }
            if (!send(report)) {
                return false;
            }
        }
        waitForQuiet();
        columns.flush();
        return true;
    }

    std::size_t commandCount() const { return commands; }

private:
    const CockpitConfiguration& configuration;
    const HidLog& log;
    const bool fast;
    std::ostream& screen;
    LiveColumns columns;
    BridgeRig rig;
    RigObserver observer;
    bool sessionReady = false;
    std::size_t commands = 0;
    /// How many events the bridge has handled, and whether the last one made a command.
    std::size_t handled = 0;
    bool queued = false;

    bool connect() {
        std::string error;
        if (!rig.setUp(error)) {
            screen << error << '\n';
            return false;
        }
        rig.plugAll();
        rig.startSimulator();
        rig.startBridge();
        if (!observer.pumpUntil([this] { return sessionReady; }, sessionLimit)) {
            columns.flush();
            screen << "the bridge didn't get a session with the virtual simulator in time; try again\n";
            return false;
        }
        return true;
    }

    bool send(const HidLogReport& report) {
        if (!observer.pumpUntil([&] { return rig.awaited(report.device); }, reportLimit)) {
            columns.flush();
            screen << "line " << report.line << ": the bridge doesn't read the board " << report.device << '\n';
            return false;
        }
        const auto control = [this](std::uint16_t number) { return controlName(configuration.eventMap, number); };
        columns.left(Clock::now(), report.device + ' ' + reportWords(report.bytes, control));
        const std::size_t handledBefore = handled;
        const std::size_t commandsBefore = commands;
        queued = false;
        rig.board(report.device).sendRaw(report.bytes);
        waitForOutcome(report, handledBefore, commandsBefore);
        return true;
    }

    /// The shortest time between two reports of a real board. A handle keeps only so many reports, and the bridge drops
    /// a press whose release comes while it waits.
    void waitForOutcome(const HidLogReport& report, std::size_t handledBefore, std::size_t commandsBefore) {
        HidProtocol::HidEvent event;
        std::string error;
        if (!HidProtocol::decodeInputReport(report.bytes.data(), report.bytes.size(), event, error)) {
            return;
        }
        observer.pumpUntil([&] { return handled > handledBefore || !rig.bridge().running(); }, eventLimit);
        if (fast && queued) {
            observer.pumpUntil([&] { return commands > commandsBefore; }, eventLimit);
        }
    }

    /// Neither the log nor the session's start interrupts a quiet time.
    bool take(const Observation& item) {
        const bool interrupts = sessionReady && item.stream != "log";
        if (item.stream == "log") {
            takeLogLine(item);
        } else if (item.stream == "sim" || item.stream == "exit") {
            takeFromSimulator(item);
        } else if (sessionReady) {
            columns.left(item.time, item.stream + ' ' + item.text);
        }
        return interrupts;
    }

    void takeLogLine(const Observation& item) {
        if (item.text.starts_with("WARN ") || item.text.starts_with("ERROR ")) {
            columns.right(item.time, "log " + item.text);
        } else if (const auto event = readHidEventLine(item.text)) {
            ++handled;
            queued = event->rpnQueued;
        }
    }

    void takeFromSimulator(const Observation& item) {
        if (!sessionReady) {
            sessionReady = item.text.starts_with(sessionEnd(configuration));
            return;
        }
        const bool isCommand = item.text.starts_with("rpn ") || item.text.starts_with("event ");
        commands += isCommand ? 1 : 0;
        columns.right(item.time, item.stream + ' ' + item.text);
    }

    void waitForQuiet() {
        const std::chrono::milliseconds spacing(configuration.settings.mobiflight.rpnRateLimitMs);
        const auto quiet = quietTime + spacing;
        observer.waitForQuiet(quiet, std::max(quietLimit, 2 * quiet));
    }
};

void printProblems(const std::string& path, const HidLog& log, std::ostream& screen) {
    for (const HidLogProblem& problem : log.problems) {
        screen << path << ':' << problem.line << ": skipped: " << problem.text << '\n';
    }
}

} // namespace

PlayOutcome runReplay(const ReplayOptions& options, std::ostream& screen, std::string& error) {
    CockpitConfiguration configuration;
    std::string text;
    if (!FileSystem::readFile(options.log, text)) {
        error = options.log + ": can't be read";
        return PlayOutcome::NotPlayed;
    }
    if (!loadCockpitConfiguration(options.configPath, configuration, error)) {
        return PlayOutcome::NotPlayed;
    }
    const HidLog log = parseHidLog(text);
    printProblems(options.log, log, screen);
    if (log.reports.empty()) {
        error = options.log + ": it contains no board reports; a log written with --hid-trace does";
        return PlayOutcome::NotPlayed;
    }
    screen << options.log << ": " << countText(log.reports.size(), "report") << " of "
           << countText(log.devices.size(), "board") << ", played with " << configuration.title << "\n\n";
    Replay replay(configuration, log, options.fast, screen);
    const bool played = replay.play();
    screen << '\n'
           << options.log << ": " << (played ? "played" : "FAILED") << ", " << countText(log.problems.size(), "line")
           << " skipped; the simulator received " << countText(replay.commandCount(), "command") << '\n';
    return played && log.problems.empty() ? PlayOutcome::AsExpected : PlayOutcome::Failed;
}
