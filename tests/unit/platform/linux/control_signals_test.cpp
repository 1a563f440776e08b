#include "platform/platform.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <vector>

namespace {

std::atomic<int> lastEvent{-1};

bool recordEvent(unsigned event) {
    lastEvent = static_cast<int>(event);
    errno = EDOM;
    return true;
}

class ControlSignals : public testing::Test {
protected:
    ControlSignals() {
        lastEvent = -1;
        for (struct sigaction& action : before) {
            sigaction(signals[static_cast<std::size_t>(&action - before)], nullptr, &action);
        }
    }
    ~ControlSignals() override {
        for (const struct sigaction& action : before) {
            sigaction(signals[static_cast<std::size_t>(&action - before)], &action, nullptr);
        }
    }

    static void install(ControlHandler handler) { systemPlatform().host.installControlHandler(handler); }

    static constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP};
    struct sigaction before[3] = {};
};

TEST_F(ControlSignals, InterruptTerminationAndHangUpAreTheFirstThreeEventsEachTime) {
    install(recordEvent);
    for (int round = 0; round < 2; ++round) {
        for (int event = 0; event < 3; ++event) {
            lastEvent = -1;
            raise(signals[event]);
            EXPECT_EQ(lastEvent, event);
        }
    }
}

TEST_F(ControlSignals, LeaveTheInterruptedCodesErrorNumber) {
    install(recordEvent);
    errno = EBADF;
    raise(SIGINT);
    EXPECT_EQ(errno, EBADF);
}

TEST_F(ControlSignals, LetInterruptedSystemCallsGoOn) {
    install(recordEvent);
    for (const int signal : signals) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        EXPECT_NE(action.sa_flags & SA_RESTART, 0) << signal;
    }
}

using ControlSignalsDeathTest = ControlSignals;

TEST_F(ControlSignalsDeathTest, UnhandledEventEndsTheProcessBySignal) {
    for (const int signal : signals) {
        EXPECT_EXIT(
            {
                install([](unsigned) { return false; });
                raise(signal);
            },
            testing::KilledBySignal(signal), "");
    }
}

} // namespace
