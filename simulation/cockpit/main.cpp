#include "simulation/cockpit/command_line.h"
#include "simulation/cockpit/page_mode.h"
#include "simulation/cockpit/replay_mode.h"
#include "simulation/cockpit/script_mode.h"

#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    CockpitOptions options;
    std::string error;
    if (!parseCockpitOptions(std::vector<std::string>(argv + 1, argv + argc), options, error)) {
        std::cerr << "virtual-cockpit: " << error << "\n\n" << cockpitUsage;
        return 1;
    }
    // The program's own stream to the screen: the bridge uses std::cout while it runs in console mode.
    std::ostream screen(std::cout.rdbuf());
    switch (options.mode) {
    case CockpitMode::Script:
        return runScripts(options.scripts, options.fast, screen);
    case CockpitMode::Replay:
        return runReplay(options, screen);
    case CockpitMode::Page:
        return runPage(options, screen);
    case CockpitMode::Help:
        break;
    }
    screen << cockpitUsage;
    return 0;
}
