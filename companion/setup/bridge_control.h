#pragma once

#include "companion/setup/child_process.h"
#include "companion/setup/running_bridge.h"
#include "platform/platform.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/// Starts and ends the bridge as a child of this program, and ends one that another program has started. One thread.
class BridgeControl {
public:
    /// Gets the lines of the log of a bridge that was started here, on a thread of its own.
    using LineCallback = ChildProcess::LineCallback;

    BridgeControl(const Host& host, ProcessControl processes, LineCallback onLine);
    /// Ends a bridge that was started here, and waits for that.
    ~BridgeControl() { end(); }
    BridgeControl(const BridgeControl&) = delete;
    BridgeControl& operator=(const BridgeControl&) = delete;

    /// The bridge beside this program.
    const std::string& programPath() const { return program; }
    bool programExists() const;

    /// The one that runs, whoever has started it.
    std::optional<RunningBridge> running() const { return findBridge(processes.list()); }
    bool wasStartedHere() const { return child != nullptr && child->running(); }

    /// False with the reason in `error`.
    bool start(const std::string& configPath, std::string& error);
    /// Asks the bridge that was started here to end. It takes a while.
    void end();
    /// Ends one that was started elsewhere. False with the reason in `error`, such as that this one runs no more.
    bool endOther(std::int64_t process, std::string& error);
    /// How `endOther` does it, for the user.
    const std::string& howOtherEnds() const { return processes.howItEnds; }

private:
    const ProcessControl processes;
    const LineCallback onLine;
    const std::string program;
    std::unique_ptr<ChildProcess> child;
};
