#include "simulation/scenarios/side_by_side.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

namespace {

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

ScenarioExpectation of(const std::string& text, std::size_t least = 1, std::size_t most = 1) {
    return {0, "sim", text, least, most};
}

ScenarioExpectation ofLog(const std::string& text) {
    return {0, "log", text, 1, 1};
}

using Texts = std::vector<std::string>;

} // namespace

TEST(TextMatches, StarMatchesAnyTextInTheLogAlone) {
    struct Case {
        const char* expected;
        const char* actual;
        bool inLog;
        bool matches;
    };
    for (const Case& one :
         {Case{"a * c", "a b c", true, true}, Case{"*", "", true, true}, Case{"a*", "a", true, true},
          Case{"*b*b", "abbab", true, true}, Case{"a * c", "a b d", true, false}, Case{"a", "ab", true, false},
          Case{"2 3 *", "2 3 4", false, false}, Case{"2 3 *", "2 3 *", false, true}}) {
        EXPECT_EQ(textMatches(one.expected, one.actual, one.inLog), one.matches) << one.expected << " / " << one.actual;
    }
}

TEST(Meets, NeedsAllInOrderWithinTheirCounts) {
    struct Case {
        std::vector<ScenarioExpectation> expected;
        Texts actual;
        bool met;
    };
    const Case cases[] = {
        {{}, {}, true},
        {{of("a"), of("b")}, {"a", "b"}, true},
        {{of("a"), of("b")}, {"b", "a"}, false},
        {{of("a")}, {}, false},
        {{of("a")}, {"a", "a"}, false},
        {{}, {"a"}, false},
        {{of("a", 3, 3)}, {"a", "a", "a"}, true},
        {{of("a", 3, 3)}, {"a", "a"}, false},
        {{of("a", 3, 3)}, {"a", "a", "a", "a"}, false},
        {{of("a", 2, unlimited), of("b")}, {"a", "a", "a", "b"}, true},
        {{of("a", 2, unlimited)}, {"a"}, false},
        {{of("a", 0, 1), of("b")}, {"b"}, true},
        {{of("a", 0, 1), of("b")}, {"a", "b"}, true},
        {{of("a", 0, 1), of("b")}, {"a", "a", "b"}, false},
        {{of("a"), of("a", 2, 2)}, {"a", "a", "a"}, true},
        {{ofLog("WARN error *")}, {"WARN error 0x80004005"}, true},
        {{of("rpn *")}, {"rpn x"}, false},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(meets(one.expected, one.actual), one.met) << "case " << &one - cases;
    }
}

TEST(ExpectationText, ShowsTheCount) {
    EXPECT_EQ(expectationText(of("a")), "a");
    EXPECT_EQ(expectationText(of("a", 3, 3)), "a x3");
    EXPECT_EQ(expectationText(of("a", 2, unlimited)), "a x2+");
    EXPECT_EQ(expectationText(of("a", 0, 1)), "a x0..1");
}

TEST(SideBySide, MarksWhatIsMissingUnexpectedOrDifferent) {
    struct Case {
        std::vector<ScenarioExpectation> expected;
        Texts actual;
        Texts rows;
    };
    const Case cases[] = {
        {{of("a"), of("b", 2, 2)}, {"a", "b", "b"}, {"a          a", "b x2       b x2"}},
        {{of("a"), of("b"), of("c")}, {"a", "c"}, {"a          a", "b        <", "c          c"}},
        {{of("a"), of("c")}, {"a", "b", "c"}, {"a          a", "         > b", "c          c"}},
        {{of("a"), of("b"), of("c")}, {"a", "x", "c"}, {"a          a", "b        | x", "c          c"}},
        {{of("a", 3, 3)}, {"a", "a"}, {"a x3     | a x2"}},
        {{}, {"a"}, {"         > a"}},
        {{of("a")}, {}, {"a        <"}},
        {{}, {}, {}},
    };
    for (const Case& one : cases) {
        Texts rows = one.rows;
        rows.insert(rows.begin(), "expected   actual");
        EXPECT_EQ(sideBySide(one.expected, one.actual), rows) << "case " << &one - cases;
    }
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
    std::istringstream printed(out.str());
    Texts lines;
    for (std::string line; std::getline(printed, line);) {
        // Without the time and the columns' padding.
        line.erase(line.find_last_not_of(" |") + 1);
        lines.push_back(line.substr(std::min(line.size(), line.find_first_not_of(" .0123456789"))));
    }
    EXPECT_EQ(lines, (Texts{"| sim dummy", "|   and 3 times more", "PFD1 bootsel", "| sim dummy", "|   and once more",
                            "", "The end."}));
}
