#include "companion/draft/line_diff.h"

#include <gtest/gtest.h>

namespace {

/// "+3 text" for each line.
std::string written(const std::vector<DiffLine>& lines) {
    std::string text;
    for (const DiffLine& line : lines) {
        const char sign = " -+"[static_cast<int>(line.kind)];
        text += sign + std::to_string(line.number) + ' ' + line.text + '\n';
    }
    return text;
}

struct DiffRow {
    std::string before;
    std::string after;
    std::string difference;
};

} // namespace

TEST(LineDiff, ShowsEachChangeWithTwoLinesAround) {
    const std::vector<DiffRow> rows{
        {"a\nb\n", "a\nb\n", ""},
        {"", "a\nb\n", "+1 a\n+2 b\n"},
        {"a\n", "", "-1 a\n"},
        {"a\nb\nc\n", "a\nc\n", " 1 a\n-2 b\n 2 c\n"},
        {"a\nb\nc\n", "a\nB\nc\n", " 1 a\n-2 b\n+2 B\n 3 c\n"},
        {"1\n2\n3\n4\n5\n6\n7\n8\n", "1\n2\n3\n4\nx\n5\n6\n7\n8\n", " 3 3\n 4 4\n+5 x\n 6 5\n 7 6\n"},
        {"a\nb\nc\nd\n", "b\nc\nX\nd\n", "-1 a\n 1 b\n 2 c\n+3 X\n 4 d\n"},
        {"a\na\n", "a\na\na\n", " 1 a\n 2 a\n+3 a\n"},
    };
    for (const DiffRow& row : rows) {
        EXPECT_EQ(written(lineDiff(row.before, row.after)), row.difference) << row.before << "->\n" << row.after;
    }
}

TEST(LineDiff, ReplacesTextsThatAreTooLongToCompare) {
    std::string before;
    std::string after;
    for (int i = 0; i < 5000; ++i) {
        before += "old " + std::to_string(i) + "\nboth\n";
        after += "new " + std::to_string(i) + "\nboth\n";
    }
    // The common end is found without comparing everything.
    EXPECT_EQ(lineDiff(before, after).size(), 2 * 9999 + 1);
}
