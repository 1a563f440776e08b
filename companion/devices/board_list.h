#pragma once

#include "config/app_config.h"
#include "hid/hid_protocol.h"
#include "platform/platform.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What can be learnt of a HID device by opening it.
struct ListedBoard {
    std::string path;
    /// Neither for reading nor for writing. Nothing else is known then.
    bool opens = false;
    /// Output reports can be written.
    bool writable = false;
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;
    std::string serial;
    /// The identity that the board reports, as the log writes it; empty when it reports none.
    std::string boardId;
    std::optional<HidProtocol::ProtocolInfo> protocol;
    /// The bridge would use it: it has the ids of the configuration.
    bool matches = false;
    /// `devices` has an entry by its name; an entry by index may apply otherwise.
    bool isListed = false;
    /// Of that entry.
    std::string role;
};

/// All HID devices in the system's order. Other programs, the bridge too, go on using them meanwhile. `config` may be
/// null: then no device matches. Feature reports are only asked of devices that match: another device could take them
/// for commands.
std::vector<ListedBoard> listBoards(const HidTransport& transport, const AppConfig* config);

/// The board's name as the bridge would log it.
std::string boardName(const ListedBoard& board);

/// The list for people.
std::string boardsText(const std::vector<ListedBoard>& boards);

/// The list as a JSON array; companion/schemas/boards.schema.json describes it.
std::string boardsJson(const std::vector<ListedBoard>& boards);
