#pragma once

#include "companion/devices/board_list.h"
#include "companion/doctor/check_result.h"
#include "companion/doctor/machine.h"
#include "companion/doctor/udev_rules.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// The boards of this machine, and what decides whether they may be opened.
struct BoardFacts {
    /// Those of the configuration; none if it doesn't say.
    std::optional<UsbIds> ids;
    /// Of the configuration: those that open.
    std::vector<ListedBoard> boards;
    /// Paths of boards of the configuration that don't open.
    std::vector<std::string> closedBoards;
    /// Devices of which not even the ids are known.
    std::size_t unknownDevices = 0;
    /// Whether the machine has udev rules at all.
    bool hasUdev = false;
    /// The rules for HID devices with the boards' vendor id.
    std::vector<UdevRuleFile> rules;
};

BoardFacts readBoardFacts(const Machine& machine, const std::string& configPath);

void judgeBoards(const BoardFacts& facts, CheckResults& results);
