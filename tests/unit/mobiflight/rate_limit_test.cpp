#include "mobiflight/rate_limit.h"

#include <gtest/gtest.h>

TEST(RateLimit, LeavesTheRestOfItBetweenTwoCommands) {
    constexpr std::int64_t sent = 1'000'000'000;
    const struct {
        std::int32_t limitMs;
        std::int64_t elapsed;
        std::int64_t delayMs;
    } rows[] = {
        {0, 0, 0},
        {-5, 0, 0},
        {1, 0, 1},
        {100, 0, 100},
        {100, 30'000'000, 70},
        // Whole milliseconds only.
        {100, 30'999'999, 70},
        {100, 99'999'999, 1},
        {100, 100'000'000, 0},
        {100, 3'600'000'000'000, 0},
    };
    RateLimit limit;
    EXPECT_EQ(limit.delay(100, 0).count(), 0) << "nothing was sent yet";
    limit.noteSend(sent);
    for (const auto& row : rows) {
        EXPECT_EQ(limit.delay(row.limitMs, sent + row.elapsed).count(), row.delayMs) << "row " << &row - rows;
    }
}
