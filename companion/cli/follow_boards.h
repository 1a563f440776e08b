#pragma once

#include "companion/live/live_boards.h"
#include "platform/platform.h"

#include <atomic>
#include <iosfwd>
#include <memory>

/// Follows the boards until Ctrl+C, or until `failed` is set because what is seen can't be written any more. Says in
/// `err` when no board is there. Gives the exit code.
int followBoards(const Platform& platform, const std::shared_ptr<const BridgeConfiguration>& configuration,
                 const LiveObserver& observer, const std::atomic<bool>& failed, std::ostream& err);
