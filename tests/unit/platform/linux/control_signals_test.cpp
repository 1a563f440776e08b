#include "platform/platform.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <csignal>

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
        for (int event = 0; event < 3; ++event) {
            sigaction(signals[event], nullptr, &before[event]);
        }
        systemPlatform().host.installControlHandler(recordEvent);
    }
    ~ControlSignals() override {
        for (int event = 0; event < 3; ++event) {
            sigaction(signals[event], &before[event], nullptr);
        }
    }

    static constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP};
    struct sigaction before[3] = {};
};

TEST_F(ControlSignals, InterruptTerminationAndHangUpAreTheFirstThreeEventsEachTime) {
    for (const int event : {0, 1, 2, 0, 1, 2}) {
        raise(signals[event]);
        EXPECT_EQ(lastEvent.exchange(-1), event);
    }
}

TEST_F(ControlSignals, LeaveTheInterruptedCodesErrorNumber) {
    errno = EBADF;
    raise(SIGINT);
    EXPECT_EQ(errno, EBADF);
}

TEST_F(ControlSignals, LetInterruptedSystemCallsGoOn) {
    for (const int signal : signals) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        EXPECT_NE(action.sa_flags & SA_RESTART, 0) << signal;
    }
}

using ControlSignalsDeathTest = ControlSignals;

TEST_F(ControlSignalsDeathTest, UnhandledEventEndsTheProcessBySignal) {
    systemPlatform().host.installControlHandler([](unsigned) { return false; });
    for (const int signal : signals) {
        EXPECT_EXIT(raise(signal), testing::KilledBySignal(signal), "");
    }
}

} // namespace
