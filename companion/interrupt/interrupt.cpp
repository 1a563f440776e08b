#include "companion/interrupt/interrupt.h"

#include <atomic>

namespace {

// The handler is a plain function that the system calls, perhaps in a signal frame.
std::atomic<bool> endRequested{false};

bool noteRequest(unsigned) {
    endRequested = true;
    return true;
}

} // namespace

void Interrupt::catchRequests(const Host& host) {
    host.installControlHandler(noteRequest);
}

bool Interrupt::requested() {
    return endRequested;
}
