#include "simulation/rig/pace.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

TEST(Pace, LimitsLongWaitsAndNoOthers) {
    struct Case {
        Pace pace;
        std::chrono::milliseconds wait;
        std::chrono::milliseconds lasts;
    };
    constexpr Pace early{100ms, 500ms, {}};
    const Case cases[] = {
        {Pace::real(), 15ms, 15ms},   {Pace::real(), 1000ms, 1000ms}, {Pace::real(), 5000ms, 1000ms},
        {Pace::fast(), 999ms, 999ms}, {Pace::fast(), 1000ms, 10ms},   {Pace::fast(), 30s, 10ms},
        {early, 99ms, 99ms},          {early, 499ms, 499ms},          {early, 501ms, 500ms},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(one.pace.apply(one.wait), one.lasts) << one.wait.count();
    }
}

TEST(Pace, OnlyTheFastOneWaitsLongerForAnAnswer) {
    EXPECT_EQ(Pace::real().openLimits.answer, SimConnectOpenLimits().answer);
    EXPECT_EQ(Pace::fast().openLimits.answer, 30s);
}
