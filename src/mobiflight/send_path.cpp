// How a command reaches the module: the one writer of the command area.

#include "logging/logger.h"
#include "mobiflight/channels.h"
#include "mobiflight/mobiflight_client.h"
#include "sim/hresult_text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

/// Follows every RPN command, so that the area's content changes even when a command comes twice in a row.
constexpr std::string_view dummyCommand = "MF.DummyCmd";

} // namespace

bool MobiFlightClient::sendCommand(const MobiFlightCommand& command) {
    const std::lock_guard lock(sendMutex);
    return command.kind == RpnKind::Encoder ? sendBurst(command) : sendOnce(command);
}

bool MobiFlightClient::sendBurst(const MobiFlightCommand& command) {
    while (running) {
        const std::int32_t count = takeDetents(command.text);
        if (count == 0)
            return true;
        for (std::int32_t sent = 0; sent < count && running; ++sent) {
            if (!sendOnce(command))
                return false;
        }
    }
    return true;
}

std::int32_t MobiFlightClient::takeDetents(const std::string& text) {
    const std::lock_guard lock(queueMutex);
    const auto detents = encoderPending.find(text);
    return detents == encoderPending.end() ? 0 : std::exchange(detents->second.pendingCount, 0);
}

bool MobiFlightClient::sendOnce(const MobiFlightCommand& command) {
    // One area for both: the confirmation of the registration may change it between the two.
    const std::uint32_t attachment = commandAttachment;
    std::string error;
    if (!writeCommandArea(attachment, command.text, error)) {
        logWarn("MobiFlight send failed: " + error);
        return false;
    }
    lastSendAt = host.now();
    hasLastSend = true;
    if (command.sendDummy && !writeCommandArea(attachment, dummyCommand, error)) {
        logWarn("MobiFlight dummy send failed: " + error);
        return false;
    }
    return true;
}

bool MobiFlightClient::writeCommandArea(std::uint32_t attachment, std::string_view text, std::string& error) {
    if (simConnect == nullptr) {
        error = noSimConnectClient;
        return false;
    }
    if (text.empty()) {
        error = "Empty command";
        return false;
    }
    if (text.size() >= commandAreaSize)
        logWarn("MobiFlight command truncated to 256 bytes");
    std::array<char, commandAreaSize> block{};
    text.copy(block.data(), block.size() - 1);
    const SimConnectHandle session = simConnect->connectedHandle();
    if (session == nullptr) {
        error = "SimConnect is not connected";
        return false;
    }
    const ChannelIds ids = channelIds(attachment);
    const SimConnectResult result =
        library.setClientData(session, ids.commandArea, ids.commandDefinition, 0, 0, commandAreaSize, block.data());
    if (!callSucceeded("SimConnect_SetClientData", result, error))
        return false;
    if (Logger::instance().debugEnabledNow())
        Logger::instance().debug("MobiFlight command: " + std::string(text));
    return true;
}
