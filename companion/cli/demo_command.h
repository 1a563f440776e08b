#pragma once

#include "companion/demo/cockpit_page.h"
#include "companion/demo/replay_mode.h"

#include <CLI/App.hpp>

#include <iosfwd>
#include <string>
#include <vector>

/// `vantrel demo`: the whole bridge on virtual boards and a virtual simulator.
class DemoCommand {
public:
    /// Adds the subcommand with its options to the program.
    explicit DemoCommand(CLI::App& program);

    bool isChosen() const { return command->parsed(); }

    /// Shows the page until the program is interrupted, or plays what the options name, and gives the exit code.
    int run(std::ostream& screen, std::ostream& err) const;

private:
    CLI::App* command;
    std::vector<std::string> scripts;
    ReplayOptions replay;
    CockpitPageOptions page;
    bool noBrowser = false;

    void addPageOptions();
    void addPlayedFiles();
    int showPage(std::ostream& screen, std::ostream& err) const;
};
