// How the client attaches to the module's areas and registers with it.

#include "logging/logger.h"
#include "mobiflight/mobiflight_client.h"
#include "text/module_commands.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace {

constexpr const char* ping = "MF.Ping";

std::string registrationText(const std::string& clientName) {
    return "MF.Clients.Add." + clientName;
}

} // namespace

void MobiFlightClient::beginSession() {
    if (extensions.renewRegistration) {
        const std::lock_guard lock(queueMutex);
        renewal.begin(host.now());
        queueCondition.notify_one();
    }
    constexpr std::uint32_t firstAttachment = 0;
    std::string error;
    if (!attachToSharedChannels(firstAttachment, error)) {
        logWarn("MobiFlight channel initialization failed: " + error);
        return;
    }
    const std::lock_guard lock(queueMutex);
    queueRegistration(firstAttachment);
}

bool MobiFlightClient::attachToSharedChannels(std::uint32_t attachment, std::string& error) {
    // A client with channels of its own doesn't request the shared values: any program may change which variables they
    // are.
    return attachToChannels(simConnect,
                            {commandChannel, responseChannel,
                             extensions.ownChannels ? std::nullopt : std::optional<std::string>(lvarsChannel)},
                            attachment, error);
}

bool MobiFlightClient::attachToOwnChannels(std::uint32_t attachment, std::string& error) {
    return attachToChannels(simConnect, {clientName + ".Command", clientName + ".Response", clientName + ".LVars"},
                            attachment, error);
}

void MobiFlightClient::queueRegistration(std::uint32_t attachment) {
    commandAttachment = attachment;
    // The module's answer may equal what its area holds already, and the simulator then delivers nothing. The answer to
    // a ping, which comes in between, changes the area.
    if (extensions.renewRegistration) {
        queueHandshake(ping);
    }
    // A client with channels of its own makes this its last write to the shared one. The registration must not remain
    // there: the next session's would be the same bytes, and the module wouldn't notice it. So the dummy follows.
    queueHandshake(registrationText(clientName), extensions.ownChannels);
}

void MobiFlightClient::queueHandshake(const std::string& text, bool sendDummy) {
    queue.enqueue({.text = text, .sendDummy = sendDummy, .queuedAt = host.now()});
    queueCondition.notify_one();
}

void MobiFlightClient::onResponse(const std::string& text) {
    const std::string registration = registrationText(clientName);
    if (!text.empty()) {
        const std::lock_guard lock(queueMutex);
        renewal.moduleAnswered();
    }
    // Searched anywhere in the text, the confirmation first: a text that contains both is a confirmation.
    if (text.find(registration + ".Finished") != std::string::npos) {
        onConfirmation();
    } else if (text.find(registration + ".Error") != std::string::npos) {
        logWarn("MobiFlight registration error: " + text);
        const std::lock_guard lock(queueMutex);
        renewal.stop();
    }
}

void MobiFlightClient::onConfirmation() {
    // A registration that was repeated may be answered twice.
    if (ready) {
        return;
    }
    if (!extensions.ownChannels) {
        becomeReady(std::nullopt);
        return;
    }
    const std::uint32_t attachment = ++furtherAttachments;
    std::string error;
    if (attachToOwnChannels(attachment, error)) {
        becomeReady(attachment);
        return;
    }
    logWarn("MobiFlight channel initialization failed: " + error);
    const std::lock_guard lock(queueMutex);
    renewal.stop();
}

void MobiFlightClient::becomeReady(std::optional<std::uint32_t> ownAttachment) {
    {
        const std::lock_guard lock(queueMutex);
        renewal.stop();
        if (ownAttachment) {
            commandAttachment = *ownAttachment;
        }
        if (ready.exchange(true)) {
            return;
        }
    }
    logInfo("MobiFlight client registered");
    if (extensions.lightVariable.empty()) {
        return;
    }
    const std::lock_guard lock(queueMutex);
    queueHandshake(std::string(ModuleCommands::clearVariables));
    queueHandshake(std::string(ModuleCommands::addVariable) + extensions.lightVariable);
}

void MobiFlightClient::renewRegistrationIfDue() {
    if (!extensions.renewRegistration) {
        return;
    }
    bool moduleIsSilent = false;
    bool isDue = false;
    std::uint32_t session = 0;
    {
        const std::lock_guard lock(queueMutex);
        const std::int64_t now = host.now();
        moduleIsSilent = renewal.takeWarning(now);
        isDue = renewal.takeDue(now) && !handshakeWaits();
        session = sessionNumber;
    }
    if (moduleIsSilent) {
        logWarn("MobiFlight module has not answered for 10 seconds; it may not be installed");
    }
    if (isDue) {
        renewRegistration(session);
    }
}

bool MobiFlightClient::handshakeWaits() const {
    return std::any_of(queue.waiting().begin(), queue.waiting().end(),
                       [](const MobiFlightCommand& command) { return !command.needsReady; });
}

void MobiFlightClient::renewRegistration(std::uint32_t session) {
    const std::uint32_t attachment = ++furtherAttachments;
    // The session's first attachment has already logged why it failed.
    std::string ignoredError;
    if (!attachToSharedChannels(attachment, ignoredError)) {
        return;
    }
    const std::lock_guard lock(queueMutex);
    // The answer may have come, or the session have ended, while the calls were made.
    if (session == sessionNumber && !ready) {
        queueRegistration(attachment);
    }
}
