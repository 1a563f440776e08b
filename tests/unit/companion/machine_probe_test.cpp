#include "companion/doctor/machine.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

TEST(CanWriteInto, TriesItAndLeavesNothing) {
    const TempFolder folder;
    EXPECT_TRUE(canWriteInto(folder.path()));
    EXPECT_EQ(FileSystem::namesIn(folder.path()).size(), 0U);
    EXPECT_FALSE(canWriteInto(folder.path("none")));
    folder.write("vantrel-write-test.tmp", "somebody's");
    EXPECT_TRUE(canWriteInto(folder.path()));
    std::string text;
    FileSystem::readFile(folder.path("vantrel-write-test.tmp"), text);
    EXPECT_EQ(text, "somebody's");
}
