#include "platform/linux/control_signals.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

namespace {

/// By the number of the event that each one means.
constexpr std::array controlSignals{SIGINT, SIGTERM, SIGHUP};

// A signal function gets no argument but the signal's number.
std::atomic<ControlHandler> controlHandler{nullptr};
static_assert(std::atomic<ControlHandler>::is_always_lock_free);

void onSignal(int signal) {
    const int savedErrno = errno;
    unsigned event = 0;
    while (controlSignals[event] != signal) {
        ++event;
    }
    if (!controlHandler.load()(event)) {
        // Blocked until this frame is left.
        std::signal(signal, SIG_DFL);
        raise(signal);
    }
    errno = savedErrno;
}

} // namespace

void installControlSignals(ControlHandler handler) {
    controlHandler.store(handler);
    struct sigaction action {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : controlSignals) {
        sigaction(signal, &action, nullptr);
    }
}
