#include "mapping/led_pauses.h"

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t pauseNs = 1'500'000'000;

TEST(LedPauses, LastsOneAndAHalfSeconds) {
    LedPauses pauses;
    EXPECT_FALSE(pauses.isPaused("B", 0, 7));
    pauses.pause("B", 0, 7);
    EXPECT_TRUE(pauses.isPaused("B", 0, 7));
    EXPECT_TRUE(pauses.isPaused("B", 0, 6 + pauseNs));
    EXPECT_FALSE(pauses.isPaused("B", 0, 7 + pauseNs));
    // It is over for ever.
    EXPECT_FALSE(pauses.isPaused("B", 0, 8));
}

TEST(LedPauses, LaterNoticeExtendsItAndAnEarlierOneNeverShortensIt) {
    LedPauses pauses;
    pauses.pause("B", 0, 0);
    pauses.pause("B", 0, 1000);
    pauses.pause("B", 0, 500);
    EXPECT_TRUE(pauses.isPaused("B", 0, 999 + pauseNs));
    EXPECT_FALSE(pauses.isPaused("B", 0, 1000 + pauseNs));
}

TEST(LedPauses, BoardGoesByItsNameAndWithoutOneByItsIndex) {
    LedPauses pauses;
    pauses.pause("B", 0, 0);
    EXPECT_TRUE(pauses.isPaused("B", 3, 0));
    EXPECT_FALSE(pauses.isPaused("C", 0, 0));
    EXPECT_FALSE(pauses.isPaused("", 0, 0));
    pauses.pause("", 4, 0);
    EXPECT_TRUE(pauses.isPaused("", 4, 0));
    EXPECT_TRUE(pauses.isPaused("#4", 0, 0));
    EXPECT_FALSE(pauses.isPaused("", 5, 0));
}

} // namespace
