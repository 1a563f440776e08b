#pragma once

#include "simulation/rig/rig_observer.h"
#include "simulation/scenarios/scenario_file.h"
#include "simulation/scenarios/session_start.h"
#include "simulation/scenarios/side_by_side.h"

#include <chrono>
#include <map>
#include <ostream>
#include <string>
#include <vector>

/// Plays one scenario: carries out its inputs in order and compares the results with its expectations. Prints what
/// happens in two columns, as it happens.
class ScenarioPlayer {
public:
    /// The scenario must outlive the player.
    ScenarioPlayer(const Scenario& scenario, bool fast, std::ostream& out);

    /// True when everything came as expected. Otherwise prints the difference and doesn't play the rest.
    bool play();
    /// Expectations met so far.
    std::size_t metCount() const { return met; }

    // For the inputs.
    BridgeRig& rig() { return bridgeRig; }
    void sendEvent(const std::string& board, const HidProtocol::HidEvent& event);
    /// Starts what doesn't run yet, waits for a new session with its handshake, or without the module's part of it, and
    /// skips everything up to then.
    void connect(bool withModule);
    void wait(std::chrono::milliseconds duration);
    /// A pause for a person who watches; none in fast play.
    void pause(std::chrono::milliseconds duration);
    /// The reason why an input failed; ends the play.
    void fail(const std::string& reason);

private:
    const Scenario& scenario;
    const bool fast;
    std::ostream& out;
    LiveColumns columns;
    BridgeRig bridgeRig;
    RigObserver observer;
    /// Looks at what came since it was last skipped or compared.
    SessionStart sessionStart;
    std::map<std::string, std::vector<std::string>> pending;
    std::size_t met = 0;
    std::size_t eventsSent = 0;
    std::size_t eventsHandled = 0;
    std::string failure;

    bool playSteps();
    bool doInput(const ScenarioInput& input);
    bool meetBlock(const ScenarioBlock& block);
    bool isMet(const ScenarioBlock& block);
    bool isWrong(const ScenarioBlock& block);
    bool meetEnd();
    bool take(const Observation& item);
    bool takeLogLine(const Observation& item);
    bool watchesLogLine(const std::string& line) const;
    void waitForEvents(const ScenarioBlock& block);
    void waitForQuiet(std::chrono::milliseconds quiet);
    void takeAsRead();
    bool compare(const ScenarioBlock& block);
    void printDifference(std::size_t line, const std::string& stream,
                         const std::vector<ScenarioExpectation>& expected) const;
};
