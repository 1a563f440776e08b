#pragma once

#include "companion/cli/watch_command.h"
#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>

/// The commands that try boards and simulator out.
class LiveCommands {
public:
    /// Adds them to the program.
    LiveCommands(CLI::App& program, const Platform& platform) : watch(program, platform) {}

    bool isChosen() const { return watch.isChosen(); }

    /// Runs the one that is chosen, and gives the exit code.
    int run(std::ostream& out, std::ostream& err) const;

private:
    const WatchCommand watch;
};
