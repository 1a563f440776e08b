#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>

/// The operations on an open serial port. Any thread may call them.
struct SerialPort {
    /// Cancels every read that another thread waits for.
    std::function<void()> cancelReads;
    std::function<void()> close;
};

/// A placeholder for a reader of a board's serial debug stream. There is no such reader yet: the configuration key for
/// it only logs a warning, so the bridge's is never running, and `stop` returns at once. `stop` has the order of steps
/// that a reader needs, and it comes first in the stop sequence.
class CdcDebugReader {
public:
    /// Not running.
    CdcDebugReader() = default;

    /// Running: `thread` reads from `port`. Either may be missing.
    CdcDebugReader(std::thread thread, std::optional<SerialPort> port)
        : running(true), thread(std::move(thread)), port(std::move(port)) {}

    /// Cancels the pending reads, waits for the thread, then closes the port. Idempotent.
    void stop();

    /// The reader's thread has not been joined.
    bool joinable() const { return thread.joinable(); }

private:
    std::atomic<bool> running{false};
    std::thread thread;
    /// None until it is opened.
    std::optional<SerialPort> port;
    /// The system's name of the port, for a reader to set with `port`.
    std::string portName;
};
