#pragma once

#include "companion/cli/boards_command.h"
#include "companion/cli/check_command.h"
#include "companion/cli/completions_command.h"
#include "companion/cli/demo_command.h"
#include "companion/cli/doctor_command.h"
#include "companion/cli/light_command.h"
#include "companion/cli/record_command.h"
#include "companion/cli/replay_command.h"
#include "companion/cli/report_command.h"
#include "companion/cli/send_command.h"
#include "companion/cli/setup_command.h"
#include "companion/cli/value_command.h"
#include "companion/cli/watch_command.h"
#include "platform/platform.h"

#include <CLI/App.hpp>

#include <iosfwd>

/// All commands of the program, in the order in which the help lists them.
class Commands {
public:
    /// Adds them to the program.
    Commands(CLI::App& program, const Platform& platform);

    /// Runs the one that the program's arguments choose, and gives the exit code.
    int run(std::ostream& out, std::ostream& err) const;

private:
    const Platform& platform;
    const SetupCommand setup;
    const DoctorCommand doctor;
    const CheckCommand check;
    const BoardsCommand boards;
    const WatchCommand watch;
    const RecordCommand record;
    const ReplayCommand replay;
    const LightCommand light;
    const SendCommand send;
    const ValueCommand value;
    const ReportCommand report;
    const DemoCommand demo;
    const CompletionsCommand completions;
};
