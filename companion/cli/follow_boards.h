#pragma once

#include "companion/live/live_boards.h"
#include "platform/platform.h"

#include <atomic>
#include <functional>
#include <iosfwd>
#include <memory>

/// Follows the boards until Ctrl+C, or until `failed` is set because what is seen can't be written any more. Calls
/// `onStarted` once they are followed; the observer may be called before. Says in `err` when no board is there. Gives
/// the exit code.
int followBoards(const Platform& platform, const std::shared_ptr<const BridgeConfiguration>& configuration,
                 const LiveObserver& observer, const std::function<void()>& onStarted, const std::atomic<bool>& failed,
                 std::ostream& err);
