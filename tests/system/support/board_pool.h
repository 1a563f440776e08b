#pragma once

#include "tests/system/support/uhid_board.h"

#include <memory>
#include <vector>

using PluggedBoards = std::vector<std::unique_ptr<UhidBoard>>;

/// Where a test gets its boards. Natively each is made for its test. Wine takes seconds for each plugging, so under
/// Wine a board stays plugged in for the next test that wants one like it, with its firmware rebooted.
namespace BoardPool {

/// A board of that model that the tested system knows. `inUse` are the test's other boards.
std::unique_ptr<UhidBoard> take(const VirtualBoardModel& model, const PluggedBoards& inUse);

/// Unplugs all that are kept, and waits until the tested system knows only those in use.
void unplugOthers(const PluggedBoards& inUse);

void giveBack(PluggedBoards boards);

} // namespace BoardPool
