#include "platform/file_system.h"

#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace {

/// The system's separator between a folder and a name that were joined.
const std::string separator(1, static_cast<char>(std::filesystem::path::preferred_separator));

constexpr bool onWindows = std::filesystem::path::preferred_separator == '\\';

TEST(FileSystemJoin, PutsTheSystemsSeparatorBetween) {
    EXPECT_EQ(FileSystem::join("folder", "name"), "folder" + separator + "name");
}

TEST(FileSystemJoin, AddsNoSecondSeparator) {
    EXPECT_EQ(FileSystem::join("folder/", "name"), "folder/name");
}

TEST(FileSystemJoin, KeepsDotParts) {
    EXPECT_EQ(FileSystem::join("a/../b", "./c/../d"), "a/../b" + separator + "./c/../d");
}

TEST(FileSystemJoin, EmptyFolderLeavesTheNameAsItIs) {
    EXPECT_EQ(FileSystem::join("", "config/config.json"), "config/config.json");
}

TEST(FileSystemJoin, EmptyNameLeavesATrailingSeparator) {
    EXPECT_EQ(FileSystem::join("folder", ""), "folder" + separator);
}

TEST(FileSystemJoin, AbsoluteNameReplacesTheFolder) {
    const std::string absolute = onWindows ? "D:\\other\\map.json" : "/other/map.json";
    EXPECT_EQ(FileSystem::join("folder", absolute), absolute);
}

TEST(FileSystemParentPath, IsEmptyForABareName) {
    EXPECT_EQ(FileSystem::parentPath("config.json"), "");
    EXPECT_EQ(FileSystem::parentPath(""), "");
}

TEST(FileSystemParentPath, IsTheFolderPartAsItWasWritten) {
    EXPECT_EQ(FileSystem::parentPath("a/../b/config.json"), "a/../b");
    EXPECT_EQ(FileSystem::parentPath("folder/"), "folder");
    EXPECT_EQ(FileSystem::parentPath("/config.json"), "/");
}

TEST(FileSystemFileName, IsTheLastComponent) {
    EXPECT_EQ(FileSystem::fileName("a/b/config.json"), "config.json");
    EXPECT_EQ(FileSystem::fileName("config.json"), "config.json");
    EXPECT_EQ(FileSystem::fileName("folder/"), "");
}

TEST(FileSystemIsAbsolute, HoldsForNoRelativePath) {
    for (const char* relative : {"", "config.json", "config/config.json", "./x", "../x"}) {
        EXPECT_FALSE(FileSystem::isAbsolute(relative)) << relative;
    }
}

TEST(FileSystemIsAbsolute, HoldsForTheSystemsAbsolutePaths) {
    EXPECT_TRUE(FileSystem::isAbsolute(onWindows ? "C:\\x" : "/x"));
    EXPECT_TRUE(FileSystem::isAbsolute(onWindows ? "C:/x" : "/"));
}

TEST(FileSystemIsAbsolute, HoldsForATempFolder) {
    const TempFolder folder;
    EXPECT_TRUE(FileSystem::isAbsolute(folder.path()));
}

TEST(FileSystemBytes, SurviveTheWayThroughAPath) {
    // "Łódź" in UTF-8: on Windows each byte is a character of the code page.
    const std::string bytes = "\xC5\x81\xC3\xB3";
    EXPECT_EQ(FileSystem::toBytes(FileSystem::fromBytes(bytes)), bytes);
    EXPECT_EQ(FileSystem::toBytes(FileSystem::fromBytes("")), "");
}

TEST(FileSystemBytes, NameTheFileThatAStreamOpensByTheSameBytes) {
    const TempFolder folder;
    const std::string subfolder = FileSystem::join(folder.path(), "E\x80ro");
    std::filesystem::create_directory(FileSystem::fromBytes(subfolder));
    const std::string path = FileSystem::join(subfolder, "config.json");
    std::ofstream(path, std::ios::binary) << "text";
    std::string text;
    EXPECT_TRUE(FileSystem::exists(path));
    EXPECT_TRUE(FileSystem::existsOrFalse(path));
    ASSERT_TRUE(FileSystem::readFile(path, text));
    EXPECT_EQ(text, "text");
    EXPECT_EQ(FileSystem::fileName(FileSystem::parentPath(path)), "E\x80ro");
}

TEST(FileSystemExists, HoldsForFilesAndFolders) {
    const TempFolder folder;
    EXPECT_TRUE(FileSystem::exists(folder.write("file", "")));
    EXPECT_TRUE(FileSystem::exists(folder.path()));
    EXPECT_TRUE(FileSystem::existsOrFalse(folder.path()));
}

TEST(FileSystemExists, IsFalseForWhatIsAbsent) {
    const TempFolder folder;
    EXPECT_FALSE(FileSystem::exists(folder.path("absent")));
    EXPECT_FALSE(FileSystem::exists(folder.path("absent/deeper")));
    EXPECT_FALSE(FileSystem::existsOrFalse(folder.path("absent")));
    EXPECT_FALSE(FileSystem::exists(""));
}

TEST(FileSystemExists, IsFalseBehindAFileInAFoldersPlace) {
    const TempFolder folder;
    EXPECT_FALSE(FileSystem::exists(FileSystem::join(folder.write("file", ""), "name")));
}

TEST(FileSystemExistsOrFalse, CountsAFailedQuestionAsAbsent) {
    EXPECT_FALSE(FileSystem::existsOrFalse(std::string(100000, 'x')));
}

TEST(FileSystemReadFile, GivesEveryByte) {
    const TempFolder folder;
    std::string content(200001, '\0');
    std::generate(content.begin(), content.end(), [next = 0]() mutable { return static_cast<char>(next++ * 7); });
    content += "\r\n\x1A end";
    std::string text = "old";
    ASSERT_TRUE(FileSystem::readFile(folder.write("file", content), text));
    EXPECT_EQ(text, content);
}

TEST(FileSystemReadFile, EmptyFileGivesEmptyText) {
    const TempFolder folder;
    std::string text = "old";
    ASSERT_TRUE(FileSystem::readFile(folder.write("file", ""), text));
    EXPECT_EQ(text, "");
}

TEST(FileSystemReadFile, AbsentFileLeavesTheText) {
    const TempFolder folder;
    std::string text = "old";
    EXPECT_FALSE(FileSystem::readFile(folder.path("absent"), text));
    EXPECT_EQ(text, "old");
}

TEST(FileSystemReadFile, RefusesAFolderAndLeavesTheText) {
    const TempFolder folder;
    std::string text = "old";
    EXPECT_FALSE(FileSystem::readFile(folder.path(), text));
    EXPECT_EQ(text, "old");
}

TEST(FileSystemFileSize, IsWhatHasBeenFlushedToAFileThatIsStillOpen) {
    const TempFolder folder;
    const std::string path = FileSystem::join(folder.path(), "E\x80ro");
    FileSystem::openForWriting(path) << "12345";
    std::ofstream writer = FileSystem::openForAppending(path);
    writer << "678" << std::flush;
    EXPECT_EQ(FileSystem::fileSize(path), 8U);
    writer << "9" << std::flush;
    EXPECT_EQ(FileSystem::fileSize(path), 9U);
}

TEST(FileSystemFileSize, IsNoneForAFolderAndForWhatIsAbsent) {
    const TempFolder folder;
    EXPECT_EQ(FileSystem::fileSize(folder.path()), std::nullopt);
    EXPECT_EQ(FileSystem::fileSize(folder.path("absent")), std::nullopt);
    EXPECT_EQ(FileSystem::fileSize(""), std::nullopt);
}

TEST(FileSystemNamesIn, AreThoseOfFilesAndFolders) {
    const TempFolder folder;
    folder.write("file", "");
    FileSystem::makeFolders(FileSystem::join(folder.path(), "E\x80ro"));
    std::vector<std::string> names = FileSystem::namesIn(folder.path());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"E\x80ro", "file"}));
    EXPECT_TRUE(FileSystem::namesIn(folder.path("absent")).empty());
}

TEST(FileSystemOpenForWriting, EmptiesTheFile) {
    const TempFolder folder;
    const std::string path = folder.write("file", "before");
    FileSystem::openForWriting(path) << "\n";
    EXPECT_EQ(FileSystem::fileSize(path), 1U);
    EXPECT_FALSE(FileSystem::openForWriting(folder.path()).is_open());
}

TEST(FileSystemRenameFile, ReplacesTheFileThatIsThere) {
    const TempFolder folder;
    const std::string from = folder.write("from", "new");
    const std::string to = folder.write("to", "old");
    std::string text;
    EXPECT_TRUE(FileSystem::renameFile(from, to));
    EXPECT_FALSE(FileSystem::exists(from));
    ASSERT_TRUE(FileSystem::readFile(to, text));
    EXPECT_EQ(text, "new");
}

TEST(FileSystemRenameFile, FailsForWhatIsAbsentAndOverAFolderInUse) {
    const TempFolder folder;
    const std::string file = folder.write("file", "text");
    folder.write("folder/occupied", "");
    EXPECT_FALSE(FileSystem::renameFile(folder.path("absent"), folder.path("to")));
    EXPECT_FALSE(FileSystem::renameFile(file, folder.path("folder")));
    EXPECT_TRUE(FileSystem::exists(file));
}

TEST(FileSystemRemove, DeletesFilesAndLeavesFoldersInUse) {
    const TempFolder folder;
    const std::string file = folder.write("file", "");
    folder.write("folder/occupied", "");
    FileSystem::remove(file);
    FileSystem::remove(file);
    FileSystem::remove(folder.path("folder"));
    EXPECT_FALSE(FileSystem::exists(file));
    EXPECT_TRUE(FileSystem::exists(folder.path("folder/occupied")));
}

TEST(FileSystemOwnSeparators, TakeTheBackslashesPlace) {
    EXPECT_EQ(FileSystem::toOwnSeparators("a\\b\\\\c"), "a" + separator + "b" + separator + separator + "c");
    EXPECT_EQ(FileSystem::toOwnSeparators("a/b"), "a/b");
    EXPECT_EQ(FileSystem::toOwnSeparators(""), "");
}

TEST(FileSystemMakeFolders, MakesAFolderWithAllItsParents) {
    const TempFolder folder;
    const std::string deep = FileSystem::join(folder.path(), "a/E\x80ro/c");
    FileSystem::makeFolders(deep);
    EXPECT_TRUE(FileSystem::exists(deep));
    FileSystem::makeFolders(deep);
    EXPECT_TRUE(FileSystem::exists(deep));
}

TEST(FileSystemMakeFolders, LeavesAFileInTheWayAndSaysNothing) {
    const TempFolder folder;
    const std::string file = folder.write("file", "text");
    FileSystem::makeFolders(FileSystem::join(file, "below"));
    FileSystem::makeFolders("");
    std::string text;
    ASSERT_TRUE(FileSystem::readFile(file, text));
    EXPECT_EQ(text, "text");
}

TEST(FileSystemCopyFile, CopiesEveryByteOverWhatIsThere) {
    const TempFolder folder;
    const std::string content("\r\n\n\0\x1A\xFF end", 10);
    const std::string from = folder.write("from", content);
    const std::string to = folder.write("to", std::string(100000, 'x'));
    std::string error;
    std::string text;
    ASSERT_TRUE(FileSystem::copyFile(from, to, error)) << error;
    ASSERT_TRUE(FileSystem::readFile(to, text));
    EXPECT_EQ(text, content);
    EXPECT_EQ(error, "");
    ASSERT_TRUE(FileSystem::copyFile(from, folder.path("new"), error)) << error;
    ASSERT_TRUE(FileSystem::readFile(folder.path("new"), text));
    EXPECT_EQ(text, content);
}

TEST(FileSystemCopyFile, SaysWhyItCannot) {
    const TempFolder folder;
    const std::string from = folder.write("from", "");
    std::string error;
    EXPECT_FALSE(FileSystem::copyFile(folder.path("absent"), folder.path("to"), error));
    EXPECT_NE(error, "");
    EXPECT_FALSE(FileSystem::exists(folder.path("to")));
    error.clear();
    EXPECT_FALSE(FileSystem::copyFile(from, folder.makeFolder("folder"), error));
    EXPECT_NE(error, "");
    error.clear();
    EXPECT_FALSE(FileSystem::copyFile(folder.path(), folder.path("to"), error));
    EXPECT_NE(error, "");
}

} // namespace
