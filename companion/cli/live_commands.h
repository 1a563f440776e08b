#pragma once

#include "companion/cli/light_command.h"
#include "companion/cli/record_command.h"
#include "companion/cli/replay_command.h"
#include "companion/cli/send_command.h"
#include "companion/cli/value_command.h"
#include "companion/cli/watch_command.h"
#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>
#include <optional>

/// The commands that follow the boards and that try boards and simulator out.
class LiveCommands {
public:
    /// Adds them to the program.
    LiveCommands(CLI::App& program, const Platform& platform);

    /// Runs the one that is chosen, and gives the exit code; none if it is another command.
    std::optional<int> run(std::ostream& out, std::ostream& err) const;

private:
    const WatchCommand watch;
    const RecordCommand record;
    const ReplayCommand replay;
    const LightCommand light;
    const SendCommand send;
    const ValueCommand value;
};
