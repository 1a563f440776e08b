// Drives, servers and separators: what only Windows paths have.

#include "platform/file_system.h"

#include <gtest/gtest.h>

namespace {

TEST(WindowsPath, IsAbsoluteWithDriveAndSeparatorInAnyOrderOfSlashes) {
    for (const char* path : {"C:\\x", "c:/x", "C:\\", "Z:/a\\b"}) {
        EXPECT_TRUE(FileSystem::isAbsolute(path)) << path;
    }
}

TEST(WindowsPath, IsAbsoluteOnAServer) {
    for (const char* path : {"\\\\server\\share\\x", "//server/share/x", "\\/server\\share", "\\\\?\\C:\\x"}) {
        EXPECT_TRUE(FileSystem::isAbsolute(path)) << path;
    }
}

TEST(WindowsPath, IsRelativeWithADriveOrASeparatorAlone) {
    for (const char* path : {"C:x", "C:", "\\x", "/x", "\\", "\\\\", "\\\\\\server\\x"}) {
        EXPECT_FALSE(FileSystem::isAbsolute(path)) << path;
    }
}

TEST(WindowsPath, OfAServerReplacesTheFolder) {
    EXPECT_EQ(FileSystem::join("C:\\folder", "\\\\server\\share\\x.json"), "\\\\server\\share\\x.json");
    EXPECT_EQ(FileSystem::join("C:\\folder", "//server/share/x.json"), "//server/share/x.json");
}

TEST(WindowsPath, OfAnotherDriveReplacesTheFolder) {
    EXPECT_EQ(FileSystem::join("C:\\folder", "D:\\x.json"), "D:\\x.json");
    EXPECT_EQ(FileSystem::join("C:\\folder", "D:x.json"), "D:x.json");
}

TEST(WindowsPath, RelativeToTheSameDriveGoesBehindTheFolder) {
    EXPECT_EQ(FileSystem::join("C:\\folder", "C:x.json"), "C:\\folder\\x.json");
}

TEST(WindowsPath, FromTheRootKeepsTheFoldersDrive) {
    EXPECT_EQ(FileSystem::join("C:\\folder", "\\x.json"), "C:\\x.json");
}

TEST(WindowsPath, OfAServersFolderIsExtended) {
    EXPECT_EQ(FileSystem::join("\\\\server\\share", "x.json"), "\\\\server\\share\\x.json");
    EXPECT_EQ(FileSystem::parentPath("\\\\server\\share\\x.json"), "\\\\server\\share");
    EXPECT_EQ(FileSystem::fileName("\\\\server\\share\\x.json"), "x.json");
}

TEST(WindowsPath, BothSeparatorsPartTheName) {
    EXPECT_EQ(FileSystem::fileName("C:\\a/b\\c"), "c");
    EXPECT_EQ(FileSystem::parentPath("C:\\a/b"), "C:\\a");
}

TEST(WindowsPath, EveryByteOfTheCodePageSurvives) {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    EXPECT_EQ(FileSystem::toBytes(FileSystem::fromBytes(bytes)), bytes);
}

} // namespace
