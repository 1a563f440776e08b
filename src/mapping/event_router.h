#pragma once

#include "mapping/event_decision.h"
#include "mapping/event_line.h"
#include "mapping/hid_event_queue.h"
#include "mapping/hold_repeater.h"
#include "mapping/mapping_context.h"
#include "mapping/output_driver.h"
#include "platform/worker.h"

#include <condition_variable>
#include <mutex>
#include <string>

/// Takes the boards' events one at a time, strictly in the order of their submission, and carries out each decision of
/// `decideEvent` on its own thread, the event worker. It never waits for MobiFlight's rate limit; only a map button's
/// press and a simulator event are sent on this thread.
class EventRouter {
public:
    /// The references must outlive the router.
    EventRouter(const Host& host, const MappingContext& context, HoldRepeater& holds, OutputDriver& outputs);

    /// False with the system's reason in `error` when there is no thread.
    bool start(std::string& error);
    bool running() const { return worker.running(); }

    /// Ends the worker after the event that it is handling; the queued ones stay. True for the first call after a
    /// start.
    bool requestStop();
    void join() { worker.join(); }

    /// Queues an event; see HidEventQueue for what a release removes. Any thread, and quick: no lookup, no log line, no
    /// I/O. The event is dropped while the worker isn't running.
    void submit(const HidProtocol::HidEvent& event, const std::string& deviceName, int index);

private:
    const Host& host;
    const MappingContext& context;
    HoldRepeater& holds;
    OutputDriver& outputs;
    Worker worker;

    // Guards `queue`. Nothing is called under it.
    std::mutex mutex;
    std::condition_variable condition;
    HidEventQueue queue;

    void run();

    // On the worker.
    void handle(const QueuedHidEvent& queued);
    void carryOutMapButton(const QueuedHidEvent& queued, const EventDecision& decision);
    void sendMapPress(const EventDecision& decision);
    void cancelReleased(const EventDecision& decision);
    void queueCommand(const EventDecision& decision, EventOutcome& outcome);
    void fireSimEvent(const EventDecision& decision, EventOutcome& outcome);
};
