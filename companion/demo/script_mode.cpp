#include "companion/demo/script_mode.h"

#include "platform/file_system.h"
#include "simulation/scenarios/scenario_file.h"
#include "simulation/scenarios/scenario_player.h"

#include <chrono>
#include <cmath>

namespace {

struct ScriptFile {
    std::string path;
    std::string text;
};

bool readScripts(const std::vector<std::string>& paths, std::vector<ScriptFile>& scripts, std::string& error) {
    for (const std::string& path : paths) {
        ScriptFile& script = scripts.emplace_back(ScriptFile{path, ""});
        if (!FileSystem::readFile(path, script.text)) {
            error = path + ": can't be read";
            return false;
        }
    }
    return true;
}

bool playScript(const ScriptFile& script, bool fast, std::ostream& screen) {
    const std::string& path = script.path;
    Scenario scenario;
    std::string error;
    if (!parseScenario(path, script.text, scenario, error)) {
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

PlayOutcome runScripts(const std::vector<std::string>& scripts, bool fast, std::ostream& screen, std::string& error) {
    std::vector<ScriptFile> files;
    if (!readScripts(scripts, files, error)) {
        return PlayOutcome::NotPlayed;
    }
    std::size_t failed = 0;
    for (const ScriptFile& file : files) {
        failed += playScript(file, fast, screen) ? 0 : 1;
    }
    if (files.size() > 1) {
        screen << files.size() - failed << " scenarios passed, " << failed << " failed\n";
    }
    return failed == 0 ? PlayOutcome::AsExpected : PlayOutcome::Failed;
}
