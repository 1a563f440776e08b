#pragma once

#include "config/hid_event_map.h"

#include <cstdint>
#include <span>
#include <string>

/// An input report in a scenario's words: "press COM_SWAP", "turn HDG +1 speed=4 mode=1", "notice"; the bytes of one
/// that the bridge drops.
std::string inputReportText(std::span<const std::uint8_t> report, const HidEventMap& eventMap);
