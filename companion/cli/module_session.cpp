#include "companion/cli/module_session.h"

#include "companion/check/finding_text.h"
#include "companion/check/rpn_check.h"
#include "companion/cli/chosen_configuration.h"
#include "companion/interrupt/interrupt.h"
#include "config/app_config.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <ostream>

namespace {

constexpr std::chrono::milliseconds sessionLook{20};
/// What takes longer than this is worth a line.
constexpr std::chrono::milliseconds silentWait{1000};
/// Of one of several attempts to read a value. A healthy module needs a few frames.
constexpr std::chrono::milliseconds readPatience{1000};

Finding findingOf(const CommandRemark& remark, const std::string& text) {
    Finding finding;
    finding.file = "command";
    finding.column = remark.offset + 1;
    finding.severity = remark.severity;
    finding.message = remark.message;
    finding.hint = remark.hint;
    finding.lineText = text;
    finding.caret = remark.offset;
    return finding;
}

const char* progressText(LinkState state) {
    return state == LinkState::ModuleSilent ? "Waiting for the MobiFlight module to answer.\n"
                                            : "Waiting for the simulator to accept a session.\n";
}

std::string failureText(const ModuleLink& link, LinkState state) {
    switch (state) {
    case LinkState::NoSimulator:
        return "the simulator doesn't run: there is no process FlightSimulator.exe or FlightSimulator2024.exe.\n"
               "Start it and try again";
    case LinkState::Refused:
        return "the simulator accepts no session: " + link.refusal() +
               ". It may still be starting; \"vantrel doctor\" looks at the rest";
    case LinkState::ModuleSilent:
        return "the simulator runs, but the MobiFlight module doesn't answer. It may not be installed, or the\n"
               "simulator may still be starting; docs/mobiflight-module.md says how to install it";
    default:
        return "the simulator didn't accept a session in time; try again with a longer --timeout";
    }
}

} // namespace

ModuleSession::ModuleSession(CLI::App& command, const Platform& platform) : platform(platform) {
    addConfigOption(command, configPath);
    command.add_option("--timeout", timeoutSeconds, "How long to wait for a session and for the module's answer")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 600))
        ->capture_default_str();
}

void ModuleSession::addForceOption(CLI::App& command) {
    command.add_flag("--force", force, "Send a text also if something is wrong with it");
}

bool ModuleSession::accepts(const std::string& rpn, std::ostream& err) const {
    bool isGood = !rpn.empty();
    err << (isGood ? "" : "vantrel: the text is empty\n");
    for (const CommandRemark& remark : checkCommand(rpn)) {
        err << findingText(findingOf(remark, rpn), false);
        isGood = isGood && (force || remark.severity == Severity::Hint);
    }
    if (!isGood && !rpn.empty()) {
        err << "Nothing was sent; --force sends it all the same.\n";
    }
    return isGood;
}

/// Without a configuration they have the names that the module gives them.
bool ModuleSession::channels(MobiFlightConfig& shared, std::ostream& err) const {
    AppConfig config;
    std::string error;
    if (loadAppConfig(chosenConfigPath(platform.host, configPath), config, error)) {
        shared = config.mobiflight;
        return true;
    }
    if (configPath.empty()) {
        return true;
    }
    err << "vantrel: " << error << '\n';
    return false;
}

bool ModuleSession::connect(ModuleLink& link, std::ostream& err) const {
    MobiFlightConfig shared;
    if (!channels(shared, err)) {
        return false;
    }
    Interrupt::catchRequests(platform.host);
    std::string error;
    if (!link.start(shared, error)) {
        err << "vantrel: " << error << '\n';
        return false;
    }
    return wait(link, err);
}

std::optional<float> ModuleSession::read(ModuleLink& link, const std::string& expression, std::string& error) const {
    const std::int64_t end = platform.host.now() + std::chrono::nanoseconds(limit()).count();
    std::optional<float> value;
    do {
        value = link.read(expression, readPatience, error);
    } while (!value && platform.host.now() < end && !Interrupt::requested() && link.state() == LinkState::Ready);
    return value;
}

bool ModuleSession::wait(const ModuleLink& link, std::ostream& err) const {
    const std::int64_t begin = platform.host.now();
    const char* shown = nullptr;
    LinkState state = link.state();
    while (state != LinkState::Ready && state != LinkState::NoSimulator && !Interrupt::requested()) {
        const std::chrono::nanoseconds waited(platform.host.now() - begin);
        if (waited >= limit()) {
            break;
        }
        if (waited >= silentWait && shown != progressText(state)) {
            shown = progressText(state);
            err << shown << std::flush;
        }
        platform.host.sleepFor(sessionLook);
        state = link.state();
    }
    if (state != LinkState::Ready) {
        err << "vantrel: " << (Interrupt::requested() ? "ended before anything was sent" : failureText(link, state))
            << '\n';
    }
    return state == LinkState::Ready;
}
