#pragma once

#include "platform/linux/file_descriptor.h"

#include <sys/eventfd.h>

#include <cstdint>

/// Wakes a thread that waits in poll(2). Once signalled it stays so.
class WakeEvent {
public:
    /// False when the system has no more descriptors.
    bool open() {
        descriptor = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
        return descriptor.isOpen();
    }

    void signal() const {
        const std::uint64_t one = 1;
        // Fails only when the counter is full, and then the event is signalled already.
        [[maybe_unused]] const auto written =
            uninterrupted([&] { return ::write(descriptor.get(), &one, sizeof one); });
    }

    /// To be polled for input.
    int pollable() const { return descriptor.get(); }

private:
    FileDescriptor descriptor;
};
