#include "mobiflight/channels.h"

#include "logging/logger.h"
#include "sim/hresult_text.h"

#include <array>

namespace {

constexpr const char* noSimConnectClient = "SimConnect client unavailable";

} // namespace

bool attachToChannels(SimConnectClient* client, const ChannelNames& names, std::uint32_t attachment,
                      std::string& error) {
    if (client == nullptr) {
        error = noSimConnectClient;
        return false;
    }
    const ChannelIds ids = channelIds(attachment);
    const bool withLVars = names.lvars.has_value();
    return client->mapClientDataName(names.command, ids.commandArea, error) &&
           client->mapClientDataName(names.response, ids.responseArea, error) &&
           (!withLVars || client->mapClientDataName(*names.lvars, ids.lvarsArea, error)) &&
           client->addClientDataDefinition(ids.commandDefinition, 0, commandAreaSize, error) &&
           client->addClientDataDefinition(ids.responseDefinition, 0, responseAreaSize, error) &&
           (!withLVars || client->addClientDataDefinition(ids.lvarsDefinition, 0, lvarsAreaSize, error)) &&
           client->requestClientData(ids.responseArea, responseRequestId, ids.responseDefinition, error) &&
           (!withLVars || client->requestClientData(ids.lvarsArea, lvarsRequestId, ids.lvarsDefinition, error));
}

bool writeCommandArea(const SimConnectLibrary& library, SimConnectClient* client, std::uint32_t attachment,
                      std::string_view text, std::string& error) {
    if (client == nullptr) {
        error = noSimConnectClient;
        return false;
    }
    if (text.empty()) {
        error = "Empty command";
        return false;
    }
    if (text.size() >= commandAreaSize) {
        logWarn("MobiFlight command truncated to 256 bytes");
    }
    // One byte less than the area, so that the text always ends in a zero.
    std::array<char, commandAreaSize> block{};
    text.copy(block.data(), block.size() - 1);
    const SimConnectHandle session = client->connectedHandle();
    if (session == nullptr) {
        error = "SimConnect is not connected";
        return false;
    }
    const ChannelIds ids = channelIds(attachment);
    const SimConnectResult result =
        library.setClientData(session, ids.commandArea, ids.commandDefinition, 0, 0, commandAreaSize, block.data());
    if (!callSucceeded("SimConnect_SetClientData", result, error)) {
        return false;
    }
    // The whole text even when it was cut: the user needs to know which command was too long.
    if (Logger::instance().debugEnabledNow()) {
        Logger::instance().debug("MobiFlight command: " + std::string(text));
    }
    return true;
}
