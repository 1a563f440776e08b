#pragma once

#include "companion/setup/child_process.h"
#include "platform/platform.h"

#include <functional>
#include <memory>
#include <string>

/// Starts and ends the bridge as a child of this program, and knows whether another one runs. One thread.
class BridgeControl {
public:
    /// Gets the lines of the log of a bridge that was started here, on a thread of its own.
    using LineCallback = ChildProcess::LineCallback;

    BridgeControl(const Host& host, LineCallback onLine);
    /// Ends a bridge that was started here, and waits for that.
    ~BridgeControl() { end(); }
    BridgeControl(const BridgeControl&) = delete;
    BridgeControl& operator=(const BridgeControl&) = delete;

    /// The bridge beside this program.
    const std::string& programPath() const { return program; }
    bool programExists() const;

    /// Any process of that name runs, whoever has started it.
    bool isRunning() const;
    bool wasStartedHere() const { return child != nullptr && child->running(); }

    /// False with the reason in `error`.
    bool start(const std::string& configPath, std::string& error);
    /// Asks the bridge that was started here to end. It takes a while.
    void end();

private:
    const Host& host;
    const LineCallback onLine;
    const std::string program;
    std::unique_ptr<ChildProcess> child;
};
