#pragma once

#include <cstdint>
#include <optional>
#include <string>

// The client data areas through which the bridge and the module talk: their names, which all programs share, and the
// numbers that the bridge gives them for itself.

struct ChannelNames {
    std::string command;
    std::string response;
    /// None: the values are not asked for.
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

/// The numbers of the session's attachment number `attachment`, counted from 0. Each attachment needs fresh ones: the
/// simulator refuses an area number that is taken, and a definition that is added to again grows instead of starting
/// over.
constexpr ChannelIds channelIds(std::uint32_t attachment) {
    constexpr std::uint32_t areas = 3;
    const std::uint32_t firstArea = 0x1000 + areas * attachment;
    const std::uint32_t firstDefinition = 0x1100 + areas * attachment;
    return {firstArea, firstArea + 1, firstArea + 2, firstDefinition, firstDefinition + 1, firstDefinition + 2};
}

// All attachments use the same two requests: one that is made again replaces the one before.
constexpr std::uint32_t responseRequestId = 0x1200;
constexpr std::uint32_t lvarsRequestId = 0x1201;

// Bytes of each area that the bridge defines. The module's command and response areas have 1024 bytes; of the texts
// that the bridge exchanges with it, none is longer than this.
constexpr std::uint32_t commandAreaSize = 256;
constexpr std::uint32_t responseAreaSize = 256;
constexpr std::uint32_t lvarsAreaSize = 4096;

constexpr const char* noSimConnectClient = "SimConnect client unavailable";
