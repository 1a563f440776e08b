#include "mapping/event_router.h"

#include "logging/logger.h"

#include <utility>

using HidProtocol::HidEventAction;

EventRouter::EventRouter(const Host& host, const MappingContext& context, HoldRepeater& holds, OutputDriver& outputs)
    : host(host), context(context), holds(holds), outputs(outputs) {}

bool EventRouter::start(std::string& error) {
    return worker.start(
        host, [this] { run(); }, "", error);
}

bool EventRouter::requestStop() {
    const bool wasRunning = worker.requestStop();
    const std::lock_guard lock(mutex);
    condition.notify_all();
    return wasRunning;
}

void EventRouter::submit(const HidProtocol::HidEvent& event, const std::string& deviceName, int index) {
    if (!worker.running()) {
        return;
    }
    // The name is copied before the lock, which keeps the event worker waiting.
    QueuedHidEvent entry{event, deviceName, static_cast<std::uint32_t>(index)};
    const std::lock_guard lock(mutex);
    queue.push(std::move(entry));
    condition.notify_one();
}

void EventRouter::run() {
    while (worker.running()) {
        std::unique_lock lock(mutex);
        condition.wait(lock, [this] { return !worker.running() || !queue.empty(); });
        // After a stop one event is still handled, if there is one.
        if (queue.empty()) {
            continue;
        }
        const QueuedHidEvent next = queue.pop();
        lock.unlock();
        handle(next);
    }
}

void EventRouter::handle(const QueuedHidEvent& queued) {
    if (context.config == nullptr || context.buttons == nullptr || context.eventMap == nullptr ||
        context.simConnect == nullptr || context.mobiflight == nullptr) {
        return;
    }
    const int index = static_cast<int>(queued.index);
    const EventDecision decision =
        decideEvent(*context.config, *context.buttons, *context.eventMap, queued.event, queued.deviceName, index);
    if (decision.pausesLights) {
        outputs.pause(queued.deviceName, index);
    }
    EventOutcome outcome;
    if (decision.isMapButton) {
        carryOutMapButton(queued, decision);
    } else {
        cancelReleased(decision);
        queueCommand(decision, outcome);
        fireSimEvent(decision, outcome);
    }
    // Building the line costs far more than this question.
    if (Logger::instance().debugEnabledNow()) {
        Logger::instance().debug(eventLine(queued, decision, outcome));
    }
}

void EventRouter::carryOutMapButton(const QueuedHidEvent& queued, const EventDecision& decision) {
    const std::string key =
        holdKey(queued.deviceName, static_cast<int>(queued.index), queued.event.controlId, decision.role);
    if (decision.action == HidEventAction::Hold) {
        if (!decision.command.empty()) {
            holds.startHold(key, std::string(decision.controlName), decision.role, decision.command);
        }
        return;
    }
    holds.stopHold(key);
    sendMapPress(decision);
    cancelReleased(decision);
}

void EventRouter::sendMapPress(const EventDecision& decision) {
    std::string error;
    if (!decision.command.empty() && !context.mobiflight->sendRpnNow(decision.command, error)) {
        logWarn("Managed map press send failed for " + std::string(decision.controlName) + ": " + error);
    }
}

void EventRouter::cancelReleased(const EventDecision& decision) {
    for (const std::string& command : decision.cancelled) {
        context.mobiflight->cancelRpn(command);
    }
}

void EventRouter::queueCommand(const EventDecision& decision, EventOutcome& outcome) {
    if (decision.command.empty()) {
        return;
    }
    if (!context.mobiflight->isReady()) {
        // The line is wrong: a control with a command has no simulator event to fall back to. People and tools know the
        // line as it is. The press is lost, so that it doesn't act on a flight that is loaded minutes later.
        if (Logger::instance().debugEnabledNow()) {
            Logger::instance().debug("MobiFlight not ready; using SimConnect fallback for " +
                                     std::string(decision.controlName));
        }
        return;
    }
    outcome.mfAmount = decision.kind == RpnKind::Encoder ? decision.amount : 0;
    std::string error;
    outcome.rpnQueued = context.mobiflight->queueRpn(decision.command, decision.kind, decision.amount, error);
    if (!outcome.rpnQueued) {
        logWarn("MobiFlight RPN send failed for " + std::string(decision.controlName) + ": " + error);
    }
}

void EventRouter::fireSimEvent(const EventDecision& decision, EventOutcome& outcome) {
    if (decision.simEvent.empty() || !context.simConnect->isConnected()) {
        return;
    }
    const std::string name(decision.simEvent);
    std::string error;
    outcome.simEventSent = context.simConnect->transmitEvent(name, 0, error);
    if (!outcome.simEventSent) {
        logWarn("SimConnect send failed for " + name + ": " + error);
    }
}
