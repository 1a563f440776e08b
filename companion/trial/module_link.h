#pragma once

#include "config/app_config.h"
#include "mobiflight/mobiflight_client.h"
#include "platform/platform.h"
#include "sim/simconnect_client.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

/// How far a link to the module has come.
enum class LinkState {
    /// Not looked yet.
    Starting,
    /// The simulator's process doesn't run.
    NoSimulator,
    /// The simulator refuses the session; see `ModuleLink::refusal`.
    Refused,
    /// There is a session, but the module hasn't confirmed the registration.
    ModuleSilent,
    /// Commands and values work.
    Ready,
};

/// A session with the simulator and its module to try commands and values in, through the bridge's own clients. The
/// module knows it as a client of its own, "VantrelTool", so it never touches the variables of the bridge or of another
/// program. On the shared channels it only registers.
///
/// `start` and `stop` are called on one thread at a time, the other operations on any.
class ModuleLink {
public:
    ModuleLink(const SimConnectLibrary& library, const Host& host);
    /// Stops.
    ~ModuleLink();
    ModuleLink(const ModuleLink&) = delete;
    ModuleLink& operator=(const ModuleLink&) = delete;

    /// Begins to look for the simulator, and goes on until `stop`, also after the end of a session. `shared` has the
    /// names of the shared channels. False with `error` set if it runs already or there is no thread.
    bool start(const MobiFlightConfig& shared, std::string& error);

    /// Ends the session. Returns within a moment, unless the simulator's library blocks. A `read` that waits fails.
    void stop();

    LinkState state() const;
    /// Why the simulator refused the last session.
    std::string refusal() const;

    /// Sends an RPN command. False with `error` set unless it was handed to the simulator.
    bool send(const std::string& rpn, std::string& error);

    /// The value of an RPN expression, which must be a number; a 4-byte one, as the module gives it. None with `error`
    /// set when the module hasn't delivered it within the limit. One caller at a time waits for its answer; others wait
    /// for their turn. Everything sent before has been carried out by then.
    std::optional<float> read(const std::string& expression, std::chrono::milliseconds limit, std::string& error);

private:
    /// The first values of our area: a marker, the expression's value, and a second marker.
    using Values = std::array<float, 3>;

    // Set by the simulator client's worker, through the records that it is given.
    std::atomic<bool> looked{false};
    std::atomic<bool> simulatorRuns{false};

    // Guards `values`, `lastResult` and `ending`. Nothing is called under it.
    mutable std::mutex mutex;
    std::condition_variable changed;
    std::optional<Values> values;
    SimConnectResult lastResult = 0;
    bool ending = false;

    /// Held through a whole `read`; everything else may be called under it.
    std::mutex readMutex;

    const Host host;
    MobiFlightClient module;
    SimConnectClient simulator;

    Host observedHost(Host host);
    SimConnectLibrary observedLibrary(SimConnectLibrary library);
    void sleep(std::chrono::milliseconds duration);
    void onClientData(std::uint32_t requestId, const std::uint8_t* data, std::uint32_t size);
    bool sendText(const std::string& text, std::string& error);
    bool request(const std::string& expression, std::uint32_t marker, std::string& error);
    std::optional<float> waitForValue(std::uint32_t marker, std::chrono::milliseconds limit);
};
