#include "companion/setup/line_splitter.h"

#include <gtest/gtest.h>

#include <vector>

TEST(LineSplitter, DeliversEachLineOnce) {
    std::vector<std::string> lines;
    LineSplitter splitter([&](const std::string& line) { lines.push_back(line); });
    splitter.add("one\ntw");
    splitter.add("o\r");
    splitter.add("\n\nunfinished");
    EXPECT_EQ(lines, (std::vector<std::string>{"one", "two", ""}));
    splitter.end();
    splitter.end();
    EXPECT_EQ(lines, (std::vector<std::string>{"one", "two", "", "unfinished"}));
}
