#include "companion/draft/file_replacement.h"

#include <gtest/gtest.h>

TEST(FileReplacement, OnAMissingDriveFails) {
    std::string error;
    EXPECT_FALSE(replaceFiles({{"X:\\panels\\config.json", "{}"}}, systemFileOperations(), error));
    EXPECT_TRUE(error.starts_with("X:\\panels\\config.json can't be written: ")) << error;
}
