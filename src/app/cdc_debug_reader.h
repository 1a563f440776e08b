#pragma once

#include "platform/platform.h"

#include <atomic>
#include <string>
#include <thread>

/// Holds what a serial debug stream from a board would need. Nothing starts it: the configuration key that asks for it
/// only produces a warning.
class CdcDebugReader {
public:
    explicit CdcDebugReader(HidTransport systemTransport);

    /// Idempotent.
    void stop();

    /// The reader's thread has not been joined.
    bool joinable() const { return thread.joinable(); }

private:
    const HidTransport transport;

    std::atomic<bool> running{false};
    std::thread thread;
    HidHandle handle = invalidHidHandle;
    std::string portName;
};
