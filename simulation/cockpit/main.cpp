#include "simulation/scenario/scenario_file.h"
#include "simulation/scenario/scenario_player.h"

#include <chrono>
#include <cmath>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr const char* usage = R"(usage: virtual-cockpit --script FILE... [--fast]

Plays scenarios (docs/scenarios.md): the whole bridge on virtual boards and a virtual simulator. What happens is printed
in two columns: what is done and what the boards show on the left, what the simulator receives on the right. Ends with 0
when all came as the scenarios expect, else with 1.

  --script FILE...  the scenarios to play, one after the other
  --fast            without the pauses that are there for those who look on, and with short waits in the bridge
  --help            this text
)";

struct Options {
    std::vector<std::string> scripts;
    bool fast = false;
    bool help = false;
    std::string error;
};

Options parseOptions(const std::vector<std::string>& arguments) {
    Options options;
    bool scriptsFollow = false;
    for (const std::string& argument : arguments) {
        if (argument == "--script") {
            scriptsFollow = true;
        } else if (argument == "--fast") {
            options.fast = true;
        } else if (argument == "--help") {
            options.help = true;
        } else if (scriptsFollow && !argument.starts_with("--")) {
            options.scripts.push_back(argument);
        } else {
            options.error = "unknown option " + argument;
        }
    }
    if (options.error.empty() && options.scripts.empty()) {
        options.error = "no scenario given";
    }
    return options;
}

bool playScript(const std::string& path, bool fast, std::ostream& screen) {
    Scenario scenario;
    std::string error;
    if (!loadScenario(path, scenario, error)) {
        screen << error << '\n';
        return false;
    }
    screen << path << ": " << scenario.title << "\n\n";
    const auto begin = std::chrono::steady_clock::now();
    std::size_t met = 0;
    bool passed = false;
    {
        ScenarioPlayer player(scenario, fast, screen);
        passed = player.play();
        met = player.metCount();
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    screen << '\n'
           << path << ": " << (passed ? "passed" : "FAILED") << ", " << met << " expectations met in "
           << std::floor(seconds.count() * 10) / 10 << " s\n";
    return passed;
}

} // namespace

int main(int argc, char** argv) {
    const Options options = parseOptions(std::vector<std::string>(argv + 1, argv + argc));
    if (options.help) {
        std::cout << usage;
        return 0;
    }
    if (!options.error.empty()) {
        std::cerr << "virtual-cockpit: " << options.error << "\n\n" << usage;
        return 1;
    }
    // The player's own way to the screen: std::cout is the bridge's while it runs in console mode.
    std::ostream screen(std::cout.rdbuf());
    std::size_t failed = 0;
    for (const std::string& script : options.scripts) {
        failed += playScript(script, options.fast, screen) ? 0 : 1;
    }
    if (options.scripts.size() > 1) {
        screen << options.scripts.size() - failed << " scenarios passed, " << failed << " failed\n";
    }
    return failed == 0 ? 0 : 1;
}
