#include "companion/demo/script_mode.h"

#include "simulation/scenarios/scenario_file.h"
#include "simulation/scenarios/scenario_player.h"

#include <chrono>
#include <cmath>

namespace {

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

bool runScripts(const std::vector<std::string>& scripts, bool fast, std::ostream& screen) {
    std::size_t failed = 0;
    for (const std::string& script : scripts) {
        failed += playScript(script, fast, screen) ? 0 : 1;
    }
    if (scripts.size() > 1) {
        screen << scripts.size() - failed << " scenarios passed, " << failed << " failed\n";
    }
    return failed == 0;
}
