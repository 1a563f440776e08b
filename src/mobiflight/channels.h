#pragma once

// The client data areas through which the bridge and the module talk: their names, which all programs share, the
// numbers that the bridge chooses for itself, and the calls that attach to the areas and write commands.

#include "sim/simconnect_client.h"
#include "text/module_commands.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct ChannelNames {
    std::string command;
    std::string response;
    /// None: the bridge doesn't request the values.
    std::optional<std::string> lvars;
};

/// The numbers of one attachment to the three areas.
struct ChannelIds {
    std::uint32_t commandArea = 0;
    std::uint32_t responseArea = 0;
    std::uint32_t lvarsArea = 0;
    std::uint32_t commandDefinition = 0;
    std::uint32_t responseDefinition = 0;
    std::uint32_t lvarsDefinition = 0;
};

/// The numbers of a session's attachment, which are counted from 0. Each attachment needs fresh ones: the simulator
/// refuses an area number that is in use, and a second addition to a definition makes it longer instead of replacing
/// it.
constexpr ChannelIds channelIds(std::uint32_t attachment) {
    constexpr std::uint32_t areas = 3;
    const std::uint32_t firstArea = 0x1000 + areas * attachment;
    const std::uint32_t firstDefinition = 0x1100 + areas * attachment;
    return {firstArea, firstArea + 1, firstArea + 2, firstDefinition, firstDefinition + 1, firstDefinition + 2};
}

// All attachments use the same two requests: a request made again replaces the earlier one.
constexpr std::uint32_t responseRequestId = 0x1200;
constexpr std::uint32_t lvarsRequestId = 0x1201;

// Bytes of each area that the bridge defines. The module's command and response areas have 1024 bytes, but no text that
// the bridge exchanges with it needs more than these.
constexpr std::uint32_t commandAreaSize = ModuleCommands::longest + 1;
constexpr std::uint32_t responseAreaSize = 256;
constexpr std::uint32_t lvarsAreaSize = 4096;

/// Maps the areas, defines their contents and requests the module's data, in this order and up to the first failure.
/// False with `error` set when a call fails or `client` is null.
bool attachToChannels(SimConnectClient* client, const ChannelNames& names, std::uint32_t attachment,
                      std::string& error);

/// Writes a text to that attachment's command area, as a whole block padded with zeros. Cuts a text that is too long,
/// with a warning. False with `error` set when the text is empty, there is no client or session, or the write fails.
bool writeCommandArea(const SimConnectLibrary& library, SimConnectClient* client, std::uint32_t attachment,
                      std::string_view text, std::string& error);
