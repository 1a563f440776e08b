#include "mobiflight/rpn_queue.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

/// The sum, limited to the largest number.
std::int32_t addDetents(std::int32_t count, std::uint32_t amount) {
    const std::int64_t sum = std::int64_t{count} + amount;
    return static_cast<std::int32_t>(std::min<std::int64_t>(sum, std::numeric_limits<std::int32_t>::max()));
}

} // namespace

bool RpnQueue::enqueue(MobiFlightCommand command, std::uint32_t amount) {
    if (amount == 0 || isAbsorbed(command, amount)) {
        return false;
    }
    commands.push_back(std::move(command));
    return true;
}

bool RpnQueue::isAbsorbed(const MobiFlightCommand& command, std::uint32_t amount) {
    if (command.kind == RpnKind::Hold) {
        return !pendingHolds.insert(command.text).second;
    }
    return command.kind == RpnKind::Encoder && addToDetents(command, amount);
}

bool RpnQueue::addToDetents(const MobiFlightCommand& command, std::uint32_t amount) {
    EncoderPending& detents = encoderPending[command.text];
    if (detents.pendingCount == 0) {
        detents.firstQueuedAt = command.queuedAt;
    }
    detents.pendingCount = addDetents(detents.pendingCount, amount);
    if (detents.inFlight) {
        return true;
    }
    return std::exchange(detents.queued, true);
}

bool RpnQueue::takeNext(bool ready, MobiFlightCommand& command) {
    const auto next = nextEntry(ready);
    if (next == commands.end()) {
        return false;
    }
    inFlight = std::move(*next);
    commands.erase(next);
    leaveTables(*inFlight);
    command = *inFlight;
    return true;
}

std::deque<MobiFlightCommand>::iterator RpnQueue::nextEntry(bool ready) {
    if (ready) {
        return commands.begin();
    }
    // Not simply the first entry: an RPN command that was queued before the registration returns to the front until the
    // module confirms the registration. If it blocked the queue, the registration would never be sent.
    const auto next = std::find_if(commands.begin(), commands.end(),
                                   [](const MobiFlightCommand& command) { return !command.needsReady; });
    return next == commands.end() ? commands.begin() : next;
}

void RpnQueue::leaveTables(MobiFlightCommand& command) {
    // A hold in flight absorbs nothing: a repeat that comes while its text is being sent must become an entry of its
    // own, or a held button would lose it.
    if (command.kind == RpnKind::Hold) {
        pendingHolds.erase(command.text);
    }
    if (command.kind != RpnKind::Encoder) {
        return;
    }
    EncoderPending& detents = encoderPending[command.text];
    detents.queued = false;
    detents.inFlight = true;
    if (command.queuedAt == 0) {
        command.queuedAt = detents.firstQueuedAt;
    }
}

std::int32_t RpnQueue::takeDetents(const std::string& text) {
    const auto detents = encoderPending.find(text);
    return detents == encoderPending.end() ? 0 : std::exchange(detents->second.pendingCount, 0);
}

void RpnQueue::putBack() {
    std::optional<MobiFlightCommand> command = std::exchange(inFlight, std::nullopt);
    // The queue was emptied because the session ended: a press of minutes ago must not act in the next session's
    // flight.
    if (!command) {
        return;
    }
    // A repeat of the hold was queued meanwhile; one of the two is enough.
    if (command->kind == RpnKind::Hold && !pendingHolds.insert(command->text).second) {
        return;
    }
    if (command->kind == RpnKind::Encoder) {
        EncoderPending& detents = encoderPending[command->text];
        detents.inFlight = false;
        detents.queued = true;
    }
    commands.push_front(std::move(*command));
}

void RpnQueue::finish() {
    std::optional<MobiFlightCommand> command = std::exchange(inFlight, std::nullopt);
    if (!command || command->kind != RpnKind::Encoder) {
        return;
    }
    EncoderPending& detents = encoderPending[command->text];
    if (detents.pendingCount == 0) {
        encoderPending.erase(command->text);
        return;
    }
    detents.inFlight = false;
    detents.queued = true;
    command->queuedAt = detents.firstQueuedAt;
    commands.push_back(std::move(*command));
}

void RpnQueue::cancel(const std::string& text) {
    std::erase_if(commands, [&](const MobiFlightCommand& command) { return command.text == text; });
    pendingHolds.erase(text);
    const auto detents = encoderPending.find(text);
    if (detents == encoderPending.end()) {
        return;
    }
    // The entry of a command in flight stays, so that later detents still join it.
    if (detents->second.inFlight) {
        detents->second = EncoderPending{.inFlight = true};
    } else {
        encoderPending.erase(detents);
    }
}

void RpnQueue::clear() {
    commands.clear();
    pendingHolds.clear();
    encoderPending.clear();
    inFlight.reset();
}
