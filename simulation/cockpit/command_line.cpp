#include "simulation/cockpit/command_line.h"

#include "simulation/scenarios/scenario_line.h"

#include <limits>

const char* const cockpitUsage =
    R"(usage: virtual-cockpit [--port N] [--config FILE] [--no-browser] [--real-boards | --real-simulator]
       virtual-cockpit --script FILE... [--fast]
       virtual-cockpit --replay LOG [--config FILE] [--fast]

The whole bridge on virtual boards and a virtual simulator.

Without --script and --replay it shows them on a page for the browser of this machine, prints its address, and runs
until it is interrupted.

  --port N          the page's port; without it 8080, or the next free one
  --config FILE     the bridge's config.json, with the files that it names; without it the sample set
  --no-browser      doesn't try to open a browser
  --real-boards     this machine's boards in place of the virtual ones
  --real-simulator  this machine's simulator in place of the virtual one

  --script FILE...  plays scenarios (docs/scenarios.md), one after the other. What happens is printed in two columns:
                    what is done and what the boards show on the left, what the simulator receives on the right. Ends
                    with 0 when all came as the scenarios expect, else with 1

  --replay LOG      sends what the boards of a trace log sent (its "HID IN" lines) again, at the log's pace, and prints
                    what the simulator receives. Ends with 0 when every line was played, else with 1

  --fast            for --script and --replay: without the pauses that let a person follow
  --help            this text
)";

namespace {

/// Goes through the arguments and fills the options.
class OptionReader {
public:
    OptionReader(const std::vector<std::string>& arguments, CockpitOptions& options, std::string& error)
        : arguments(arguments), options(options), error(error) {}

    bool read() {
        while (next < arguments.size() && error.empty()) {
            take(arguments[next++]);
        }
        return error.empty() && check();
    }

private:
    const std::vector<std::string>& arguments;
    CockpitOptions& options;
    std::string& error;
    std::size_t next = 0;
    bool help = false;
    bool script = false;
    bool replay = false;

    void take(const std::string& argument) {
        if (argument == "--script") {
            script = true;
        } else if (script && !argument.starts_with("--")) {
            options.scripts.push_back(argument);
        } else if (argument == "--replay") {
            replay = true;
            options.replayLog = value(argument);
        } else if (argument == "--config") {
            options.configPath = value(argument);
        } else if (argument == "--port") {
            takePort(value(argument));
        } else if (bool* const option = plainOption(argument); option != nullptr) {
            *option = argument != "--no-browser";
        } else {
            error = "unknown option " + argument;
        }
    }

    bool* plainOption(const std::string& argument) {
        if (argument == "--fast") {
            return &options.fast;
        }
        if (argument == "--no-browser") {
            return &options.openBrowser;
        }
        if (argument == "--real-boards") {
            return &options.realBoards;
        }
        if (argument == "--real-simulator") {
            return &options.realSimulator;
        }
        return argument == "--help" ? &help : nullptr;
    }

    std::string value(const std::string& option) {
        if (next >= arguments.size() || arguments[next].empty()) {
            error = option + " needs a value";
            return "";
        }
        return arguments[next++];
    }

    void takePort(const std::string& text) {
        const auto number = wholeNumber(text, 0, std::numeric_limits<std::uint16_t>::max());
        if (number) {
            options.port = static_cast<std::uint16_t>(*number);
        } else if (error.empty()) {
            error = '"' + text + "\" is no port: a number from 0 to 65535 was meant to stand here";
        }
    }

    bool check() {
        if (help) {
            options.mode = CockpitMode::Help;
            return true;
        }
        if (script && replay) {
            error = "--script and --replay don't go together";
        } else if (script) {
            options.mode = CockpitMode::Script;
            checkScript();
        } else if (replay) {
            options.mode = CockpitMode::Replay;
            checkNoPage("--replay");
        } else if (options.fast) {
            error = "--fast goes with --script or --replay";
        } else if (options.realBoards && options.realSimulator) {
            error = "--real-boards and --real-simulator together are VantrelBridgeHID itself";
        }
        return error.empty();
    }

    void checkScript() {
        if (options.scripts.empty()) {
            error = "no scenario given";
        } else if (!options.configPath.empty()) {
            error = "--config doesn't go with --script: a scenario holds its own configuration";
        } else {
            checkNoPage("--script");
        }
    }

    void checkNoPage(const std::string& mode) {
        if (options.port || options.realBoards || options.realSimulator) {
            error = "--port, --real-boards and --real-simulator don't go with " + mode;
        }
    }
};

} // namespace

bool parseCockpitOptions(const std::vector<std::string>& arguments, CockpitOptions& options, std::string& error) {
    error.clear();
    return OptionReader(arguments, options, error).read();
}
