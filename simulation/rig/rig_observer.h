#pragma once

#include "simulation/rig/bridge_rig.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Something that came out of a rig.
struct Observation {
    /// When it came; for a line of the log, when it was read.
    std::chrono::steady_clock::time_point time;
    /// "sim", "log", "exit" or a board's name.
    std::string stream;
    /// In the words of stream_texts.h; a line of the log begins with its level.
    std::string text;
};

/// Watches a rig: what the simulator gets from the bridge, what the boards receive, the log, and the bridge's exit
/// codes. Sets the callbacks of the rig's boards, simulator and bridge, so a rig has one observer, made before the
/// rig's setUp. Driven by the thread that drives the rig.
class RigObserver {
public:
    /// Takes one observation. True when it interrupts a quiet time.
    using Sink = std::function<bool(const Observation& observation)>;

    /// Without a sink only `take` may be called. Dummy commands are left out unless requested.
    explicit RigObserver(BridgeRig& rig, Sink sink = {}, bool dummiesToo = false);

    /// What came since the last call: first everything else in order, then the log's lines.
    std::vector<Observation> take();
    /// Passes what came since the last call to the sink.
    void pump();
    /// Pumps until the condition is true; false when it isn't within the limit.
    bool pumpUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit);
    void pumpFor(std::chrono::milliseconds duration);
    /// Pumps until nothing interrupted the quiet for this long from now on, or for as long as the limit.
    void waitForQuiet(std::chrono::milliseconds quiet, std::chrono::milliseconds limit);
    /// Whether nothing interrupted the quiet for this long.
    bool quietFor(std::chrono::milliseconds duration) const;

private:
    /// The observations that arrive on any thread.
    struct Inbox;

    BridgeRig& rig;
    const Sink sink;
    std::shared_ptr<Inbox> inbox;
    std::chrono::steady_clock::time_point lastInterruption;
};
