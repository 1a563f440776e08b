// Drives, servers and separators: what only Windows paths have.

#include "platform/file_system.h"

#include <gtest/gtest.h>

namespace {

TEST(WindowsPath, IsAbsoluteWithDriveAndSeparatorOrOnAServer) {
    for (const char* path : {R"(C:\x)", "c:/x", R"(C:\)", R"(Z:/a\b)", R"(\\server\share\x)", "//server/share/x",
                             R"(\/server\share)", R"(\\?\C:\x)"}) {
        EXPECT_TRUE(FileSystem::isAbsolute(path)) << path;
    }
    for (const char* path : {"C:x", "C:", R"(\x)", "/x", R"(\)", R"(\\)", R"(\\\server\x)"}) {
        EXPECT_FALSE(FileSystem::isAbsolute(path)) << path;
    }
}

TEST(WindowsPath, ReplacesTheFolderUnlessItIsOnTheSameDrive) {
    const char* const cases[][3] = {
        {R"(C:\folder)", R"(\\server\share\x.json)", R"(\\server\share\x.json)"},
        {R"(C:\folder)", "//server/share/x.json", "//server/share/x.json"},
        {R"(C:\folder)", R"(D:\x.json)", R"(D:\x.json)"},
        {R"(C:\folder)", "D:x.json", "D:x.json"},
        {R"(C:\folder)", "C:x.json", R"(C:\folder\x.json)"},
        {R"(C:\folder)", R"(\x.json)", R"(C:\x.json)"},
        {R"(\\server\share)", "x.json", R"(\\server\share\x.json)"},
    };
    for (const auto& [folder, name, joined] : cases) {
        EXPECT_EQ(FileSystem::join(folder, name), joined);
    }
}

TEST(WindowsPath, IsSplitAtEitherSeparator) {
    EXPECT_EQ(FileSystem::parentPath(R"(\\server\share\x.json)"), R"(\\server\share)");
    EXPECT_EQ(FileSystem::fileName(R"(\\server\share\x.json)"), "x.json");
    EXPECT_EQ(FileSystem::fileName(R"(C:\a/b\c)"), "c");
    EXPECT_EQ(FileSystem::parentPath(R"(C:\a/b)"), R"(C:\a)");
}

TEST(WindowsPath, KeepsEveryByteOfTheCodePage) {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    EXPECT_EQ(FileSystem::toBytes(FileSystem::fromBytes(bytes)), bytes);
}

} // namespace
