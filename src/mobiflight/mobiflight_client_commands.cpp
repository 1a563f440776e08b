// How commands reach the module: the callers' side of the queue, the worker that paces it, and the writes.

#include "logging/logger.h"
#include "mobiflight/mobiflight_client.h"
#include "text/module_commands.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string_view>
#include <utility>

namespace {

constexpr const char* emptyRpn = "Empty RPN command";

/// Follows every RPN command, so that the area's content changes even when a command comes twice in a row: the module
/// is only notified of changes.
constexpr std::string_view dummyCommand = "MF.DummyCmd";

// Between two attempts at a command that can't be sent yet.
constexpr std::chrono::milliseconds sessionRetry{100};
constexpr std::chrono::milliseconds readyRetry{50};

std::string commandText(const std::string& rpn) {
    std::string text;
    text.reserve(ModuleCommands::runCommand.size() + rpn.size());
    text.append(ModuleCommands::runCommand).append(rpn);
    return text;
}

} // namespace

bool MobiFlightClient::checkRunning(std::string& error) const {
    if (!enabled) {
        error = "MobiFlight disabled";
        return false;
    }
    if (!worker.running()) {
        error = "MobiFlight not running";
        return false;
    }
    return true;
}

bool MobiFlightClient::checkReady(std::string& error) const {
    if (!checkRunning(error)) {
        return false;
    }
    if (!simConnected) {
        error = "SimConnect is not connected";
        return false;
    }
    if (!ready) {
        error = "MobiFlight not ready";
        return false;
    }
    return true;
}

bool MobiFlightClient::queueRpn(const std::string& rpn, RpnKind kind, std::uint32_t amount, std::string& error) {
    if (!checkRunning(error)) {
        return false;
    }
    if (rpn.empty()) {
        error = emptyRpn;
        return false;
    }
    MobiFlightCommand command = rpnCommand(rpn, kind);
    const std::lock_guard lock(queueMutex);
    if (queue.enqueue(std::move(command), amount)) {
        queueCondition.notify_one();
    }
    return true;
}

bool MobiFlightClient::sendRpnNow(const std::string& rpn, std::string& error) {
    if (!checkReady(error)) {
        return false;
    }
    if (rpn.empty()) {
        error = emptyRpn;
        return false;
    }
    // Any kind except Encoder: sending one would take the detents that wait in the queue.
    return sendCommand(rpnCommand(rpn, RpnKind::Hold));
}

bool MobiFlightClient::sendTextNow(const std::string& text, std::string& error) {
    return checkReady(error) && sendCommand({.text = text, .needsReady = true, .sendDummy = true});
}

void MobiFlightClient::cancelRpn(const std::string& rpn) {
    if (rpn.empty()) {
        return;
    }
    const std::string text = commandText(rpn);
    const std::lock_guard lock(queueMutex);
    queue.cancel(text);
}

MobiFlightCommand MobiFlightClient::rpnCommand(const std::string& rpn, RpnKind kind) const {
    return {.text = commandText(rpn), .needsReady = true, .sendDummy = true, .kind = kind, .queuedAt = host.now()};
}

void MobiFlightClient::workerLoop() {
    MobiFlightCommand command;
    while (worker.running()) {
        renewRegistrationIfDue();
        if (takeNext(command)) {
            serve(command);
        }
    }
}

bool MobiFlightClient::takeNext(MobiFlightCommand& command) {
    std::unique_lock lock(queueMutex);
    waitForWork(lock);
    return worker.running() && queue.takeNext(ready, command);
}

void MobiFlightClient::waitForWork(std::unique_lock<std::mutex>& lock) {
    const std::optional<std::int64_t> due = renewal.nextDue();
    // A renewal that begins meanwhile is due at another time.
    const auto hasWork = [&] { return !worker.running() || !queue.waiting().empty() || renewal.nextDue() != due; };
    if (due) {
        queueCondition.wait_for(lock, std::chrono::nanoseconds(std::max<std::int64_t>(0, *due - host.now())), hasWork);
    } else {
        queueCondition.wait(lock, hasWork);
    }
}

void MobiFlightClient::serve(const MobiFlightCommand& command) {
    if (!simConnected) {
        retryLater(sessionRetry);
        return;
    }
    if (command.needsReady && !ready) {
        retryLater(readyRetry);
        return;
    }
    waitForRateLimit();
    // Dropped, not sent late: a press of minutes ago must not act in the flight that is loaded now. While no session
    // has followed, the command goes on and fails, so that the log shows the loss.
    if (inFlightIsStale()) {
        return;
    }
    // A command that fails is not repeated: by then it may no longer be what the pilot wants. The log has the cause.
    sendCommand(command);
    const std::lock_guard lock(queueMutex);
    queue.finish();
}

void MobiFlightClient::retryLater(std::chrono::milliseconds delay) {
    host.sleepFor(delay);
    const std::lock_guard lock(queueMutex);
    queue.putBack();
}

void MobiFlightClient::waitForRateLimit() {
    const std::chrono::milliseconds delay = rateLimit.delay(rpnRateLimitMs, host.now());
    if (delay.count() > 0) {
        host.sleepFor(delay);
    }
}

bool MobiFlightClient::inFlightIsStale() {
    const std::lock_guard lock(queueMutex);
    return !queue.hasInFlight() && simConnected;
}

bool MobiFlightClient::sendCommand(const MobiFlightCommand& command) {
    const std::lock_guard lock(sendMutex);
    return command.kind == RpnKind::Encoder ? sendBurst(command) : sendOnce(command);
}

bool MobiFlightClient::sendBurst(const MobiFlightCommand& command) {
    while (worker.running()) {
        // Detents that arrive during the burst extend it.
        const std::int32_t count = takeDetents(command.text);
        if (count == 0) {
            return true;
        }
        // No pause between them: with one, a fast knob would lag behind the pilot.
        for (std::int32_t sent = 0; sent < count && worker.running(); ++sent) {
            // The remaining detents are lost with it, as with any command that fails.
            if (!sendOnce(command)) {
                return false;
            }
        }
    }
    return true;
}

std::int32_t MobiFlightClient::takeDetents(const std::string& text) {
    const std::lock_guard lock(queueMutex);
    return queue.takeDetents(text);
}

bool MobiFlightClient::sendOnce(const MobiFlightCommand& command) {
    // One area for both: the confirmation of the registration may change it between the two.
    const std::uint32_t attachment = commandAttachment;
    std::string error;
    if (!writeCommandArea(library, simConnect, attachment, command.text, error)) {
        logWarn("MobiFlight send failed: " + error);
        return false;
    }
    rateLimit.noteSend(host.now());
    if (command.sendDummy && !writeCommandArea(library, simConnect, attachment, dummyCommand, error)) {
        logWarn("MobiFlight dummy send failed: " + error);
        return false;
    }
    return true;
}
