#include "mapping/hold_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace {

using std::string;
using std::vector;

constexpr std::int64_t period = 10;

class HoldTableTest : public testing::Test {
protected:
    void start(const string& key, const string& command, std::int64_t now) {
        holds.start(key, "MAP_LEFT", "PFD", command, now, period);
    }

    /// The commands due at a time, sorted.
    vector<string> due(std::int64_t now) {
        vector<string> commands;
        for (const DueHold& hold : holds.takeDue(now, period)) {
            commands.push_back(hold.command);
        }
        std::sort(commands.begin(), commands.end());
        return commands;
    }

    HoldTable holds;
};

TEST_F(HoldTableTest, HoldIsDueEachPeriodFromOnePeriodOn) {
    start("a", "LEFT", 1000);
    EXPECT_EQ(due(1009), vector<string>{});
    EXPECT_EQ(due(1010), vector<string>{"LEFT"});
    EXPECT_EQ(due(1010), vector<string>{});
    EXPECT_EQ(due(1019), vector<string>{});
    EXPECT_EQ(due(1020), vector<string>{"LEFT"});
    // A late look takes it once and counts from then.
    EXPECT_EQ(due(1095), vector<string>{"LEFT"});
    EXPECT_EQ(due(1104), vector<string>{});
    EXPECT_EQ(due(1105), vector<string>{"LEFT"});
}

TEST_F(HoldTableTest, StartOfARunningHoldRefreshesItsCommandButNotItsTime) {
    start("a", "LEFT", 0);
    start("a", "RIGHT", 6);
    EXPECT_EQ(due(9), vector<string>{});
    EXPECT_EQ(due(10), vector<string>{"RIGHT"});
}

TEST_F(HoldTableTest, HoldsAreIndependent) {
    start("a", "LEFT", 0);
    start("b", "RIGHT", 4);
    EXPECT_EQ(due(10), vector<string>{"LEFT"});
    EXPECT_EQ(due(20), (vector<string>{"LEFT", "RIGHT"}));
    holds.stop("a");
    holds.stop("none");
    EXPECT_FALSE(holds.contains("a"));
    EXPECT_TRUE(holds.contains("b"));
    EXPECT_EQ(due(30), vector<string>{"RIGHT"});
    holds.clear();
    EXPECT_TRUE(holds.empty());
}

TEST(HoldKey, HasBoardIndexControlAndRole) {
    EXPECT_EQ(holdKey("B", 0, 30, "PFD"), "B|0|30|PFD");
    EXPECT_EQ(holdKey("", -1, 65535, ""), "|-1|65535|");
}

TEST(HoldPeriod, BelowOneMillisecondCountsAsTen) {
    constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(holdPeriodNs(1), 1'000'000);
    EXPECT_EQ(holdPeriodNs(highest), std::int64_t{highest} * 1'000'000);
    EXPECT_EQ(holdPeriodNs(0), 10'000'000);
    EXPECT_EQ(holdPeriodNs(-5), 10'000'000);
}

} // namespace
