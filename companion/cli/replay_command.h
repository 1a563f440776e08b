#pragma once

#include "companion/cli/module_session.h"
#include "companion/recording/replay_input.h"
#include "companion/trial/event_sender.h"
#include "companion/trial/module_link.h"
#include "platform/platform.h"

#include <CLI/App.hpp>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

/// `vantrel replay`: shows what the bridge does with recorded reports, and does it if asked to.
class ReplayCommand {
public:
    /// Adds the subcommand with its options to the program.
    ReplayCommand(CLI::App& program, const Platform& platform);

    bool isChosen() const { return command->parsed(); }

    /// Plays the record and gives the exit code.
    int run(std::ostream& out, std::ostream& err) const;

private:
    const Platform& platform;
    CLI::App* command;
    ModuleSession session;
    std::string file;
    bool raw = false;
    bool toSimulator = false;

    bool read(const BridgeConfiguration& configuration, ReplayInput& input, std::ostream& err) const;
    bool send(const ReplayInput& input, const BridgeConfiguration& configuration, std::ostream& out,
              std::ostream& err) const;
    std::size_t play(const ReplayInput& input, const ModuleLink& link, EventSender& sender, std::ostream& out) const;
    bool sleepUntil(std::int64_t time) const;
};
