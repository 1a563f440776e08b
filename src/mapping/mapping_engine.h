#pragma once

#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "hid/hid_manager.h"
#include "hid/hid_protocol.h"
#include "mapping/event_router.h"
#include "mapping/hold_repeater.h"
#include "mapping/mapping_context.h"
#include "mapping/output_driver.h"
#include "mobiflight/mobiflight_client.h"
#include "platform/platform.h"
#include "sim/shared_sim_state.h"
#include "sim/simconnect_client.h"

#include <atomic>
#include <string>

/// Decides what a board's events mean and what a board shows. Its three workers are classes of their own: EventRouter
/// takes the events in order, HoldRepeater repeats held map buttons, OutputDriver keeps the boards' lights in step with
/// the simulator. `start` and `stop` are called on one thread at a time; the other operations on any, but a backlight
/// payload doesn't come during `start`. No thread ever holds two of the mutexes of these classes at once, nor any of
/// them across a call to another subsystem.
class MappingEngine {
public:
    explicit MappingEngine(Host host);
    ~MappingEngine();
    MappingEngine(const MappingEngine&) = delete;
    MappingEngine& operator=(const MappingEngine&) = delete;

    /// The pointers are not owned, may be null, and must outlive the engine's run. False with `error` set when it
    /// runs already or the system gives no thread; nothing new runs then.
    bool start(const AppConfig* config, HidManager* hid, SimConnectClient* simConnect, MobiFlightClient* mobiflight,
               const ButtonConfig* buttons, const HidEventMap* eventMap, SharedSimState* simState, std::string& error);

    /// Idempotent. Queued events stay in the queue, and paused boards stay paused; holds are forgotten.
    void stop();

    /// Queues an event; a button's release first removes the queued hold repeats of its own button. Returns quickly: no
    /// lookup, no logging, no I/O. While the engine isn't running the event is dropped.
    void submitEvent(const HidProtocol::HidEvent& event, const std::string& deviceName, int index);

    /// Recomputes the lights of all boards once no further request has come for `outputs.debounceMs`.
    void requestOutputUpdate();

    /// An LVar text from the module.
    void onBacklightPayload(const std::string& text);

private:
    const Host host;
    MappingContext context;

public:
    /// Whether the SimConnect session is up; stored by App on every change, read by the output worker.
    std::atomic<bool> simConnected{false};

private:
    OutputDriver outputs;
    HoldRepeater holds;
    EventRouter events;

    void joinWorkers();
};
