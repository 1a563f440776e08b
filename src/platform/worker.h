#pragma once

#include "platform/platform.h"

#include <atomic>
#include <functional>
#include <string>
#include <thread>

/// The one thread of a subsystem, from its start until its owner stops and joins it.
///
/// The owner starts, stops and joins on one thread at a time, holding no lock that the body takes; `running` may be
/// read by any thread. A worker that was started must be joined before it is destroyed. After that it can be started
/// again.
///
/// To stop: `requestStop`, wake the body if it waits, `join`. An owner that lets other threads see `running` needs no
/// flag of its own.
class Worker {
public:
    /// Runs `body` on a thread from `host`; `running` is true before the body begins. False when the system gives no
    /// thread: `error` is then `failure` followed by the system's reason, and `running` is false again. Needs a worker
    /// that is not running.
    bool start(const Host& host, std::function<void()> body, const std::string& failure, std::string& error);

    /// True from `start` until `requestStop`. The body returns once it sees false.
    bool running() const { return isRunning; }

    /// Asks the body to return. True for the first call after a start alone, which makes a stop idempotent. A body that
    /// waits on a condition misses a wake-up that comes between its look at `running` and its wait, so the owner
    /// notifies under the condition's mutex, or takes that mutex once before it notifies.
    bool requestStop() { return isRunning.exchange(false); }

    /// Waits until the body has returned. Returns at once when there is no thread to wait for.
    void join();

private:
    std::atomic<bool> isRunning{false};
    std::thread thread;
};
