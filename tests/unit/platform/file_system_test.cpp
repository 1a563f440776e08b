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

/// What the system puts between a folder and a name.
const std::string separator(1, static_cast<char>(std::filesystem::path::preferred_separator));

constexpr bool onWindows = std::filesystem::path::preferred_separator == '\\';

TEST(FileSystemPaths, JoinFollowsTheSystemsRuleWithoutCleaningUp) {
    EXPECT_EQ(FileSystem::join("folder", "name"), "folder" + separator + "name");
    EXPECT_EQ(FileSystem::join("folder/", "name"), "folder/name");
    EXPECT_EQ(FileSystem::join("a/../b", "./c/../d"), "a/../b" + separator + "./c/../d");
    EXPECT_EQ(FileSystem::join("", "config/config.json"), "config/config.json");
    EXPECT_EQ(FileSystem::join("folder", ""), "folder" + separator);
    const std::string absolute = onWindows ? "D:\\other\\map.json" : "/other/map.json";
    EXPECT_EQ(FileSystem::join("folder", absolute), absolute);
}

TEST(FileSystemPaths, ParentPathAndFileNameSplitAtTheLastSeparator) {
    const std::vector<std::string> cases[] = {
        {"config.json", "", "config.json"},
        {"", "", ""},
        {"a/../b/config.json", "a/../b", "config.json"},
        {"/config.json", "/", "config.json"},
        {"folder/", "folder", ""},
    };
    for (const std::vector<std::string>& each : cases) {
        EXPECT_EQ(FileSystem::parentPath(each[0]), each[1]) << each[0];
        EXPECT_EQ(FileSystem::fileName(each[0]), each[2]) << each[0];
    }
}

TEST(FileSystemPaths, AreAbsoluteByTheSystemsNotion) {
    for (const char* relative : {"", "config.json", "config/config.json", "./x", "../x"}) {
        EXPECT_FALSE(FileSystem::isAbsolute(relative)) << relative;
    }
    EXPECT_TRUE(FileSystem::isAbsolute(onWindows ? "C:\\x" : "/x"));
    EXPECT_TRUE(FileSystem::isAbsolute(onWindows ? "C:/x" : "/"));
}

TEST(FileSystemPaths, OwnSeparatorsReplaceBackslashes) {
    EXPECT_EQ(FileSystem::toOwnSeparators("a\\b\\\\c"), "a" + separator + "b" + separator + separator + "c");
    EXPECT_EQ(FileSystem::toOwnSeparators("a/b"), "a/b");
}

/// Two files, an empty one and one of four bytes, beside a folder with a file in it, whose name isn't ASCII.
class FileSystemFiles : public testing::Test {
protected:
    TempFolder folder;
    const std::string file = folder.write("file", "text");
    const std::string empty = folder.write("empty", "");
    const std::string subfolder = FileSystem::join(folder.path(), "E\x80ro");
    const std::string inner = FileSystem::join(subfolder, "inner");
    const std::string absent = folder.path("absent");

    FileSystemFiles() {
        FileSystem::makeFolders(subfolder);
        FileSystem::openForWriting(inner) << "inner";
    }

    static std::string content(const std::string& path) {
        std::string text = "(absent)";
        FileSystem::readFile(path, text);
        return text;
    }
};

TEST_F(FileSystemFiles, ExistWhetherFileOrFolder) {
    for (const std::string& path : {file, empty, subfolder, inner, folder.path()}) {
        EXPECT_TRUE(FileSystem::exists(path)) << path;
        EXPECT_TRUE(FileSystem::existsOrFalse(path)) << path;
    }
    for (const std::string& path :
         {absent, FileSystem::join(absent, "deeper"), FileSystem::join(file, "name"), std::string()}) {
        EXPECT_FALSE(FileSystem::exists(path)) << path;
        EXPECT_FALSE(FileSystem::existsOrFalse(path)) << path;
    }
    // The system fails to answer for a path of that length.
    EXPECT_FALSE(FileSystem::existsOrFalse(std::string(100000, 'x')));
}

TEST_F(FileSystemFiles, NamesInListsFilesAndFolders) {
    std::vector<std::string> names = FileSystem::namesIn(folder.path());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"E\x80ro", "empty", "file"}));
    EXPECT_TRUE(FileSystem::namesIn(absent).empty());
}

TEST_F(FileSystemFiles, ReadFileGivesEveryByteOfAFileAndLeavesTheTextWithoutOne) {
    std::string bytes(200001, '\0');
    std::generate(bytes.begin(), bytes.end(), [next = 0]() mutable { return static_cast<char>(next++ * 7); });
    bytes += "\r\n\x1A end";
    std::string text = "old";
    EXPECT_FALSE(FileSystem::readFile(absent, text));
    EXPECT_FALSE(FileSystem::readFile(folder.path(), text));
    EXPECT_EQ(text, "old");
    ASSERT_TRUE(FileSystem::readFile(folder.write("large", bytes), text));
    EXPECT_EQ(text, bytes);
    ASSERT_TRUE(FileSystem::readFile(empty, text));
    EXPECT_EQ(text, "");
    ASSERT_TRUE(FileSystem::readFile(inner, text));
    EXPECT_EQ(text, "inner");
}

TEST_F(FileSystemFiles, FileSizeIsThatOnDiskOfAFileThatIsStillOpen) {
    std::ofstream writer = FileSystem::openForAppending(inner);
    writer << "678" << std::flush;
    EXPECT_EQ(FileSystem::fileSize(inner), 8U);
    writer << "9" << std::flush;
    EXPECT_EQ(FileSystem::fileSize(inner), 9U);
    for (const std::string& path : {subfolder, absent, std::string()}) {
        EXPECT_EQ(FileSystem::fileSize(path), std::nullopt) << path;
    }
}

TEST_F(FileSystemFiles, OpenForWritingEmptiesTheFile) {
    FileSystem::openForWriting(file) << "\n";
    EXPECT_EQ(FileSystem::fileSize(file), 1U);
    EXPECT_FALSE(FileSystem::openForWriting(subfolder).is_open());
}

TEST_F(FileSystemFiles, RenameFileReplacesAFileButNoFolderInUse) {
    EXPECT_TRUE(FileSystem::renameFile(file, empty));
    EXPECT_FALSE(FileSystem::exists(file));
    EXPECT_EQ(content(empty), "text");
    EXPECT_FALSE(FileSystem::renameFile(absent, empty));
    EXPECT_FALSE(FileSystem::renameFile(empty, subfolder));
    EXPECT_EQ(content(empty), "text");
}

TEST_F(FileSystemFiles, RemoveDeletesFilesAndLeavesFoldersInUse) {
    FileSystem::remove(file);
    FileSystem::remove(file);
    FileSystem::remove(subfolder);
    EXPECT_FALSE(FileSystem::exists(file));
    EXPECT_TRUE(FileSystem::exists(inner));
}

TEST_F(FileSystemFiles, MakeFoldersMakesAllParentsAndLeavesAFileInTheWay) {
    const std::string deep = FileSystem::join(subfolder, "a/b");
    for (int round = 0; round < 2; ++round) {
        FileSystem::makeFolders(deep);
        EXPECT_TRUE(FileSystem::exists(deep));
    }
    FileSystem::makeFolders(FileSystem::join(file, "below"));
    FileSystem::makeFolders("");
    EXPECT_EQ(content(file), "text");
}

TEST_F(FileSystemFiles, CopyFileCopiesEveryByteOverWhatIsThere) {
    const std::string bytes("\r\n\n\0\x1A\xFF end", 10);
    const std::string from = folder.write("from", bytes);
    for (const std::string& to : {folder.write("longer", std::string(100000, 'x')), absent}) {
        std::string error;
        EXPECT_TRUE(FileSystem::copyFile(from, to, error));
        EXPECT_EQ(error, "");
        EXPECT_EQ(content(to), bytes);
    }
}

TEST_F(FileSystemFiles, CopyFileGivesTheSystemsReasonWhenItFails) {
    const std::string target = folder.path("target");
    const std::pair<std::string, std::string> cases[] = {{absent, target}, {file, subfolder}, {subfolder, target}};
    for (const auto& [from, to] : cases) {
        std::string error;
        EXPECT_FALSE(FileSystem::copyFile(from, to, error)) << from;
        EXPECT_NE(error, "") << from;
    }
    EXPECT_FALSE(FileSystem::exists(target));
}

} // namespace
