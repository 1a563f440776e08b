#pragma once

#include "companion/trial/module_link.h"
#include "platform/platform.h"

#include <CLI/App.hpp>

#include <chrono>
#include <iosfwd>
#include <optional>
#include <string>

/// The common part of the commands that need the simulator and its module: their options, and the way there.
class ModuleSession {
public:
    /// Adds the options --config and --timeout to a command.
    ModuleSession(CLI::App& command, const Platform& platform);

    /// Adds --force, which concerns `accepts`.
    void addForceOption(CLI::App& command);

    /// Prints what `vantrel check` says about an RPN text. True if it is worth sending, or must be sent all the same.
    bool accepts(const std::string& rpn, std::ostream& err) const;

    /// Starts the link and waits until the module knows us. Says in `err` what it waits for, and what is wrong if it
    /// waits in vain or is ended by Ctrl+C.
    bool connect(ModuleLink& link, std::ostream& err) const;

    /// Reads a value, as `ModuleLink::read` does, but tries again within the limit. Ctrl+C ends it.
    std::optional<float> read(ModuleLink& link, const std::string& expression, std::string& error) const;

    const std::string& config() const { return configPath; }
    std::chrono::milliseconds limit() const { return std::chrono::seconds(timeoutSeconds); }

private:
    const Platform& platform;
    std::string configPath;
    int timeoutSeconds = 15;
    bool force = false;

    bool channels(MobiFlightConfig& shared, std::ostream& err) const;
    bool wait(const ModuleLink& link, std::ostream& err) const;
};
