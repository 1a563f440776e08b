#pragma once

// A scenario: boards, configuration, simulator events and time in; commands, board reports and log lines out.
// docs/scenarios.md specifies the format.

#include "config/json.h"
#include "simulation/rig/rig_settings.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

class ScenarioPlayer;

/// A control's number and its name in the event map.
struct ScenarioControl {
    std::uint16_t id = 0;
    std::string name;
};

/// A row of the command table. Without an action it only lists the control.
struct ScenarioCommand {
    std::string control;
    std::string action;
    std::string role;
    std::string text;
};

/// What is compared besides the commands, the boards' reports and the log's warnings and errors.
struct ScenarioWatch {
    bool dummies = false;
    /// Which INFO and DEBUG lines: those that contain one of the texts, which may be empty.
    std::vector<std::string> infoTexts;
    std::vector<std::string> debugTexts;
};

/// What a board sends in one step.
struct ScenarioReports {
    /// Empty: the step isn't about that.
    std::string board;
    std::vector<std::uint8_t> bytes;
    /// How often the report is sent, and the pause after each time but the last.
    long times = 1;
    std::chrono::milliseconds pause{0};
};

/// An action on the boards, the simulator or the bridge.
struct ScenarioInput {
    std::size_t line = 0;
    /// The line as written, without the ">".
    std::string text;
    /// Text for people who watch; empty except for "say".
    std::string remark;
    std::function<void(ScenarioPlayer& player)> apply;
    // The same as data, for those who use the boards' input without the player.
    ScenarioReports reports;
    /// Of "wait" and "pause".
    std::chrono::milliseconds duration{0};
};

/// One line that is expected in a stream: "sim", "log", "exit" or a board's name.
struct ScenarioExpectation {
    std::size_t line = 0;
    std::string stream;
    std::string text;
    std::size_t least = 1;
    std::size_t most = 1;
};

/// Expectations that are met together, in order within each stream. Without any, nothing may have come.
struct ScenarioBlock {
    std::size_t line = 0;
    std::vector<ScenarioExpectation> expected;
};

using ScenarioStep = std::variant<ScenarioInput, ScenarioBlock>;

struct Scenario {
    /// Of the file, for messages.
    std::string path;
    /// The first comment: what behaviour it shows.
    std::string title;
    std::vector<RigBoard> boards;
    std::vector<ScenarioControl> controls;
    std::vector<ScenarioCommand> commands;
    /// Merged over the default configuration, one after the other.
    std::vector<JsonValue> settings;
    /// Configuration files by name, verbatim, instead of those made of the rest.
    std::map<std::string, std::string> files;
    /// Configuration files that don't exist.
    std::set<std::string> missingFiles;
    bool consoleMode = false;
    /// Whether the bridge is notified of boards that come and go, besides its own scan.
    bool hotPlugNotifications = true;
    /// False: the module doesn't run until a step starts it.
    bool moduleInstalled = true;
    ScenarioWatch watch;
    /// Nothing is compared: it only shows what happens.
    bool unchecked = false;
    std::vector<ScenarioStep> steps;
};

/// False with "path:line:column: what is wrong" in `error`; `scenario` is then half read.
bool parseScenario(const std::string& path, std::string_view text, Scenario& scenario, std::string& error);
