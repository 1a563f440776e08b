// The queue of RPN commands, and the worker that serves it.

#include "mobiflight/mobiflight_client.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view rpnPrefix = "MF.SimVars.Set.1 ";
constexpr const char* emptyRpn = "Empty RPN command";

// Between two looks at a command that can't be sent yet.
constexpr std::chrono::milliseconds sessionRetry{100};
constexpr std::chrono::milliseconds readyRetry{50};

constexpr std::int64_t nanosecondsPerMillisecond = 1'000'000;

std::string commandText(const std::string& rpn) {
    std::string text;
    text.reserve(rpnPrefix.size() + rpn.size());
    return text.append(rpnPrefix).append(rpn);
}

/// The sum, which stays at the largest number when it would go past it.
std::int32_t addDetents(std::int32_t count, std::uint32_t amount) {
    const std::int64_t sum = std::int64_t{count} + amount;
    return static_cast<std::int32_t>(std::min<std::int64_t>(sum, std::numeric_limits<std::int32_t>::max()));
}

} // namespace

bool MobiFlightClient::checkRunning(std::string& error) const {
    if (!enabled) {
        error = "MobiFlight disabled";
        return false;
    }
    if (!running) {
        error = "MobiFlight not running";
        return false;
    }
    return true;
}

bool MobiFlightClient::queueRpn(const std::string& rpn, RpnKind kind, std::uint32_t amount, std::string& error) {
    if (!checkRunning(error))
        return false;
    if (rpn.empty()) {
        error = emptyRpn;
        return false;
    }
    if (amount == 0)
        return true;
    MobiFlightCommand command = rpnCommand(rpn, kind);
    const std::lock_guard lock(queueMutex);
    if (absorb(command, amount))
        return true;
    commandQueue.push_back(std::move(command));
    queueCondition.notify_one();
    return true;
}

bool MobiFlightClient::sendRpnNow(const std::string& rpn, std::string& error) {
    if (!checkRunning(error))
        return false;
    if (!simConnected) {
        error = "SimConnect is not connected";
        return false;
    }
    if (!ready) {
        error = "MobiFlight not ready";
        return false;
    }
    if (rpn.empty()) {
        error = emptyRpn;
        return false;
    }
    // The kind only keeps it out of the detents' way: it is in no table.
    return sendCommand(rpnCommand(rpn, RpnKind::Hold));
}

void MobiFlightClient::cancelRpn(const std::string& rpn) {
    if (rpn.empty())
        return;
    const std::string text = commandText(rpn);
    const std::lock_guard lock(queueMutex);
    std::erase_if(commandQueue, [&](const MobiFlightCommand& command) { return command.text == text; });
    pendingHolds.erase(text);
    const auto detents = encoderPending.find(text);
    if (detents == encoderPending.end())
        return;
    if (!detents->second.inFlight) {
        encoderPending.erase(detents);
        return;
    }
    detents->second = EncoderPending{.inFlight = true};
}

MobiFlightCommand MobiFlightClient::rpnCommand(const std::string& rpn, RpnKind kind) const {
    return {.text = commandText(rpn), .needsReady = true, .sendDummy = true, .kind = kind, .queuedAt = host.now()};
}

bool MobiFlightClient::absorb(MobiFlightCommand& command, std::uint32_t amount) {
    if (command.kind == RpnKind::Hold)
        return !pendingHolds.insert(command.text).second;
    if (command.kind == RpnKind::Normal)
        return false;
    EncoderPending& detents = encoderPending[command.text];
    if (detents.pendingCount == 0)
        detents.firstQueuedAt = command.queuedAt;
    detents.pendingCount = addDetents(detents.pendingCount, amount);
    if (detents.queued || detents.inFlight)
        return true;
    command.queuedAt = detents.firstQueuedAt;
    detents.queued = true;
    return false;
}

void MobiFlightClient::workerLoop() {
    MobiFlightCommand command;
    while (running) {
        renewRegistrationIfDue();
        if (takeNext(command))
            serve(command);
    }
}

bool MobiFlightClient::takeNext(MobiFlightCommand& command) {
    std::unique_lock lock(queueMutex);
    waitForWork(lock);
    if (!running || commandQueue.empty())
        return false;
    const auto next = nextInQueue();
    command = std::move(*next);
    commandQueue.erase(next);
    inFlightIsStale = false;
    // What is in flight is only kept: merging looks at what waits. A repeat that comes while its text is being sent
    // must become an entry of its own, or a held button would lose it.
    if (command.kind == RpnKind::Hold)
        inFlightHolds.insert(pendingHolds.extract(command.text));
    const auto detents = encoderPending.find(command.text);
    if (command.kind != RpnKind::Encoder || detents == encoderPending.end())
        return true;
    detents->second.queued = false;
    detents->second.inFlight = true;
    if (command.queuedAt == 0)
        command.queuedAt = detents->second.firstQueuedAt;
    return true;
}

void MobiFlightClient::waitForWork(std::unique_lock<std::mutex>& lock) {
    const std::optional<std::int64_t> due = renewal.nextDue();
    // A renewal that begins meanwhile has another time to wait for.
    const auto hasWork = [&] { return !running || !commandQueue.empty() || renewal.nextDue() != due; };
    if (due)
        queueCondition.wait_for(lock, std::chrono::nanoseconds(std::max<std::int64_t>(0, *due - host.now())), hasWork);
    else
        queueCondition.wait(lock, hasWork);
}

std::deque<MobiFlightCommand>::iterator MobiFlightClient::nextInQueue() {
    // Not the first in any case: an RPN command that came in ahead of the registration goes back to the front until the
    // module answers the registration, which would then never be sent.
    const auto next = ready ? commandQueue.begin()
                            : std::find_if(commandQueue.begin(), commandQueue.end(),
                                           [](const MobiFlightCommand& command) { return !command.needsReady; });
    return next == commandQueue.end() ? commandQueue.begin() : next;
}

void MobiFlightClient::serve(MobiFlightCommand& command) {
    if (!simConnected) {
        host.sleepFor(sessionRetry);
        putBack(command);
        return;
    }
    if (command.needsReady && !ready) {
        host.sleepFor(readyRetry);
        putBack(command);
        return;
    }
    waitForRateLimit();
    // Dropped, not sent late: nobody expects a press of minutes ago to act in the flight that is loaded now.
    if (handIsFromEarlierSession())
        return;
    // A command that fails is gone; the log has the cause already.
    sendCommand(command);
    finish(command);
}

void MobiFlightClient::waitForRateLimit() {
    if (rpnRateLimitMs < 1 || !hasLastSend)
        return;
    const std::int64_t elapsedMs = (host.now() - lastSendAt) / nanosecondsPerMillisecond;
    if (elapsedMs < rpnRateLimitMs)
        host.sleepFor(std::chrono::milliseconds(rpnRateLimitMs - elapsedMs));
}

bool MobiFlightClient::handIsFromEarlierSession() {
    const std::lock_guard lock(queueMutex);
    return inFlightIsStale && simConnected;
}

void MobiFlightClient::putBack(MobiFlightCommand& command) {
    const std::lock_guard lock(queueMutex);
    // It belongs to a session that is over, and the queue was emptied then: put back it would reach the next one.
    if (inFlightIsStale)
        return;
    if (command.kind == RpnKind::Hold) {
        inFlightHolds.erase(command.text);
        if (!pendingHolds.insert(command.text).second)
            return;
    }
    bool waitsAlready = false;
    if (command.kind == RpnKind::Encoder) {
        EncoderPending& detents = encoderPending[command.text];
        detents.inFlight = false;
        waitsAlready = std::exchange(detents.queued, true);
    }
    if (!waitsAlready)
        commandQueue.push_front(std::move(command));
    queueCondition.notify_one();
}

void MobiFlightClient::finish(MobiFlightCommand& command) {
    const std::lock_guard lock(queueMutex);
    // The tables are another session's by now.
    if (inFlightIsStale)
        return;
    if (command.kind == RpnKind::Hold)
        inFlightHolds.erase(command.text);
    const auto detents = encoderPending.find(command.text);
    if (command.kind != RpnKind::Encoder || detents == encoderPending.end())
        return;
    EncoderPending& pending = detents->second;
    pending.inFlight = false;
    if (pending.pendingCount <= 0) {
        encoderPending.erase(detents);
        return;
    }
    if (pending.queued)
        return;
    pending.queued = true;
    command.queuedAt = pending.firstQueuedAt;
    commandQueue.push_back(std::move(command));
    queueCondition.notify_one();
}
