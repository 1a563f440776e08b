#pragma once

#include "companion/devices/board_list.h"
#include "config/output_profiles.h"
#include "hid/hid_protocol.h"
#include "platform/platform.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The board of the configuration that a user means: by its identity, its name, its serial number, or its number among
/// those of the configuration, from 0. Null if there is none.
const ListedBoard* findBoard(const std::vector<ListedBoard>& boards, std::string_view text);

/// The effect of that name, "steady", "breathe", "flash" or "off" in any case, as the default profile has it, with
/// another brightness or level. None for another name.
std::optional<LedEffect> effectNamed(std::string_view name, std::optional<std::int32_t> percent);

/// Writes the report with which the bridge shows the command on this board. False with `error` set if that fails. The
/// bridge may have the board open too; it shows its own light again with its next change.
bool showLight(const HidTransport& transport, const ListedBoard& board, const LedCommand& command, std::string& error);
