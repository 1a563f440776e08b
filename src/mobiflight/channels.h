#pragma once

#include <cstdint>

// The client data area that takes the commands, by the numbers that the bridge gives it in every session.

constexpr std::uint32_t commandAreaId = 0x1000;
constexpr std::uint32_t commandDefinitionId = 0x1100;
/// In bytes, as the module creates it. A text is followed by at least one zero.
constexpr std::uint32_t commandAreaSize = 256;

constexpr const char* noSimConnectClient = "SimConnect client unavailable";
