#pragma once

#include "companion/trial/module_link.h"
#include "platform/platform.h"

#include <CLI/App.hpp>

#include <chrono>
#include <iosfwd>
#include <string>

/// The common part of the commands that need the simulator and its module: their options, and the way there.
class ModuleSession {
public:
    /// Adds the options --config, --timeout and --force to a command.
    ModuleSession(CLI::App& command, const Platform& platform);

    /// Prints what `vantrel check` says about an RPN text. True if it is worth sending, or must be sent all the same.
    bool accepts(const std::string& rpn, std::ostream& err) const;

    /// Starts the link and waits until the module knows us. Says in `err` what it waits for, and what is wrong if it
    /// ends in vain, by Ctrl+C too.
    bool connect(ModuleLink& link, std::ostream& err) const;

    std::chrono::milliseconds limit() const { return std::chrono::seconds(timeoutSeconds); }

private:
    const Platform& platform;
    std::string configPath;
    int timeoutSeconds = 15;
    bool force = false;

    bool channels(MobiFlightConfig& shared, std::ostream& err) const;
    bool wait(const ModuleLink& link, std::ostream& err) const;
};
