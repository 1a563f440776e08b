#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <thread>

/// The operations on an open serial port. Any thread may call them.
struct SerialPort {
    /// Ends every read that another thread waits in.
    std::function<void()> cancelReads;
    std::function<void()> close;
};

/// The place of a reader for a board's serial debug stream. There is none yet: the configuration key that asks for it
/// only logs a warning, so nothing sets `running`, and `stop` returns at once. `stop` keeps the order that a reader
/// needs, and its place at the head of the stop sequence.
class CdcDebugReader {
public:
    /// Cancels the pending reads, waits for the thread, then closes the port. Idempotent.
    void stop();

    /// The reader's thread has not been joined.
    bool joinable() const { return thread.joinable(); }

private:
    std::atomic<bool> running{false};
    std::thread thread;
    /// None until it is opened.
    std::optional<SerialPort> port;
    std::string portName;
};
