#include "companion/setup/command_trial.h"

#include <algorithm>
#include <chrono>

namespace {

constexpr const char* trialClientName = "vantrel";
/// How soon an end or a simulator is noticed.
constexpr std::chrono::milliseconds longestSleep{200};

} // namespace

CommandTrial::CommandTrial(const SimConnectLibrary& library, const Host& host)
    : mobiflight(library, host), simConnect(library, impatientHost(host)) {}

CommandTrial::~CommandTrial() {
    ending = true;
    mobiflight.stop();
    simConnect.stop();
}

/// The client waits up to 30 seconds before it looks for the simulator again. A person who has just started it doesn't.
Host CommandTrial::impatientHost(const Host& host) {
    Host changed = host;
    changed.sleepFor = [this, sleep = host.sleepFor](std::chrono::milliseconds wait) {
        constexpr std::chrono::milliseconds longestWait{2000};
        for (wait = std::min(wait, longestWait); wait.count() > 0 && !ending; wait -= longestSleep) {
            sleep(std::min(wait, longestSleep));
        }
    };
    return changed;
}

bool CommandTrial::start(std::string& error) {
    ExtensionsConfig extensions;
    extensions.renewRegistration = true;
    extensions.ownChannels = true;
    MobiFlightConfig config;
    config.clientName = trialClientName;
    mobiflight.setExtensions(extensions);
    return mobiflight.start(&simConnect, config, error) &&
           simConnect.start(
               trialClientName, [this](bool connected) { mobiflight.onSimConnectState(connected); },
               [] { return true; }, error);
}

bool CommandTrial::send(const std::string& command, std::string& error) {
    if (!isConnected()) {
        error = "There is no connection to the simulator. Start it and try again";
        return false;
    }
    if (!isReady()) {
        error = "The simulator's MobiFlight module doesn't answer. Is it installed?";
        return false;
    }
    return mobiflight.queueRpn(command, RpnKind::Normal, 1, error);
}
