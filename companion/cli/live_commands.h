#pragma once

#include "companion/cli/light_command.h"
#include "companion/cli/send_command.h"
#include "companion/cli/value_command.h"
#include "companion/cli/watch_command.h"
#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>

/// The commands that follow the boards and that try boards and simulator out.
class LiveCommands {
public:
    /// Adds them to the program.
    LiveCommands(CLI::App& program, const Platform& platform);

    bool isChosen() const;

    /// Runs the one that is chosen, and gives the exit code.
    int run(std::ostream& out, std::ostream& err) const;

private:
    const WatchCommand watch;
    const LightCommand light;
    const SendCommand send;
    const ValueCommand value;
};
