#include "simulation/scenarios/side_by_side.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

namespace {

constexpr std::size_t anyNumber = std::numeric_limits<std::size_t>::max();

ScenarioExpectation of(const std::string& text, std::size_t least = 1, std::size_t most = 1) {
    return {0, "sim", text, least, most};
}

ScenarioExpectation ofLog(const std::string& text) {
    return {0, "log", text, 1, 1};
}

using Texts = std::vector<std::string>;

} // namespace

TEST(TextMatches, StarStandsForAnyTextInTheLogAlone) {
    EXPECT_TRUE(textMatches("a * c", "a b c", true));
    EXPECT_TRUE(textMatches("*", "", true));
    EXPECT_TRUE(textMatches("a*", "a", true));
    EXPECT_TRUE(textMatches("*b*b", "abbab", true));
    EXPECT_FALSE(textMatches("a * c", "a b d", true));
    EXPECT_FALSE(textMatches("a", "ab", true));
    EXPECT_FALSE(textMatches("2 3 *", "2 3 4", false));
    EXPECT_TRUE(textMatches("2 3 *", "2 3 *", false));
}

TEST(Meets, NeedsAllInOrderWithNothingLeft) {
    EXPECT_TRUE(meets({}, {}));
    EXPECT_TRUE(meets({of("a"), of("b")}, {"a", "b"}));
    EXPECT_FALSE(meets({of("a"), of("b")}, {"b", "a"}));
    EXPECT_FALSE(meets({of("a")}, {}));
    EXPECT_FALSE(meets({of("a")}, {"a", "a"}));
    EXPECT_FALSE(meets({}, {"a"}));
}

TEST(Meets, CountsAreHeldAtBothEnds) {
    EXPECT_TRUE(meets({of("a", 3, 3)}, {"a", "a", "a"}));
    EXPECT_FALSE(meets({of("a", 3, 3)}, {"a", "a"}));
    EXPECT_FALSE(meets({of("a", 3, 3)}, {"a", "a", "a", "a"}));
    EXPECT_TRUE(meets({of("a", 2, anyNumber), of("b")}, {"a", "a", "a", "b"}));
    EXPECT_FALSE(meets({of("a", 2, anyNumber)}, {"a"}));
    EXPECT_TRUE(meets({of("a", 0, 1), of("b")}, {"b"}));
    EXPECT_TRUE(meets({of("a", 0, 1), of("b")}, {"a", "b"}));
    EXPECT_FALSE(meets({of("a", 0, 1), of("b")}, {"a", "a", "b"}));
    EXPECT_TRUE(meets({of("a"), of("a", 2, 2)}, {"a", "a", "a"}));
}

TEST(Meets, LogLinesMayHoldStars) {
    EXPECT_TRUE(meets({ofLog("WARN error *")}, {"WARN error 0x80004005"}));
    EXPECT_FALSE(meets({of("rpn *")}, {"rpn x"}));
}

TEST(ExpectationText, TellsTheCount) {
    EXPECT_EQ(expectationText(of("a")), "a");
    EXPECT_EQ(expectationText(of("a", 3, 3)), "a x3");
    EXPECT_EQ(expectationText(of("a", 2, anyNumber)), "a x2+");
    EXPECT_EQ(expectationText(of("a", 0, 1)), "a x0..1");
}

TEST(SideBySide, EqualLinesHaveNoMark) {
    EXPECT_EQ(sideBySide({of("a"), of("b", 2, 2)}, {"a", "b", "b"}),
              (Texts{"expected   actual", "a          a", "b x2       b x2"}));
}

TEST(SideBySide, MissingLinesAreMarked) {
    EXPECT_EQ(sideBySide({of("a"), of("b"), of("c")}, {"a", "c"}),
              (Texts{"expected   actual", "a          a", "b        <", "c          c"}));
}

TEST(SideBySide, UnexpectedLinesAreMarked) {
    EXPECT_EQ(sideBySide({of("a"), of("c")}, {"a", "b", "c"}),
              (Texts{"expected   actual", "a          a", "         > b", "c          c"}));
}

TEST(SideBySide, DifferentLinesStandBesideEachOther) {
    EXPECT_EQ(sideBySide({of("a"), of("b"), of("c")}, {"a", "x", "c"}),
              (Texts{"expected   actual", "a          a", "b        | x", "c          c"}));
}

TEST(SideBySide, WrongCountIsADifference) {
    EXPECT_EQ(sideBySide({of("a", 3, 3)}, {"a", "a"}), (Texts{"expected   actual", "a x3     | a x2"}));
}

TEST(SideBySide, OneSideAlone) {
    EXPECT_EQ(sideBySide({}, {"a"}), (Texts{"expected   actual", "         > a"}));
    EXPECT_EQ(sideBySide({of("a")}, {}), (Texts{"expected   actual", "a        <"}));
    EXPECT_EQ(sideBySide({}, {}), Texts{"expected   actual"});
}

TEST(SideBySide, ColumnIsAsWideAsItsLongestLine) {
    EXPECT_EQ(sideBySide({of("a long expectation")}, {"b"}),
              (Texts{"expected             actual", "a long expectation | b"}));
}

TEST(LiveColumns, RepeatsAreCountedAndNotPrinted) {
    std::ostringstream out;
    LiveColumns columns(out);
    const auto now = std::chrono::steady_clock::now();
    for (int i = 0; i < 4; ++i) {
        columns.right(now, "sim dummy");
    }
    columns.left(now, "PFD1 bootsel");
    columns.right(now, "sim dummy");
    columns.right(now, "sim dummy");
    columns.remark("The end.");
    const std::string text = out.str();
    const auto count = [&text](const std::string& part) {
        std::size_t found = 0;
        for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
            ++found;
        }
        return found;
    };
    EXPECT_EQ(count("| sim dummy\n"), 2U);
    EXPECT_EQ(count("|   and 3 times more\n"), 1U);
    EXPECT_EQ(count("|   and once more\n"), 1U);
    EXPECT_EQ(count("  PFD1 bootsel"), 1U);
    EXPECT_TRUE(text.ends_with("\n\nThe end.\n"));
}
