// Reading and writing one file.

#include "tests/unit/registration/exe_xml_machine.h"

#include <filesystem>

namespace {

class ExeXmlFile : public ExeXmlMachine {
protected:
    const std::string path = folder.path("EXE.xml");
    const std::string backup = folder.path("EXE.xml.bak");

    bool write(const std::string& text) { return ExeXmlRegistrar::writeExeXml(path, text, error); }
};

TEST_F(ExeXmlFile, IsWrittenAndReadByteForByteOverALongerText) {
    put(path, std::string(100000, 'x'));
    const std::string text("\xEF\xBB\xBF<a>\r\n\n\r\x1A\0\xFF end", 17);
    EXPECT_TRUE(write(text));
    EXPECT_EQ(contentOf(path), text);
    EXPECT_EQ(ExeXmlRegistrar::readExeXml(path), text);
    EXPECT_TRUE(write(""));
    EXPECT_EQ(contentOf(path), "");
    EXPECT_EQ(error, "");
}

TEST_F(ExeXmlFile, ReadsAsEmptyWhenItIsAbsentOrAFolder) {
    for (const std::string& none : {path, folder.path(), std::string()}) {
        EXPECT_EQ(ExeXmlRegistrar::readExeXml(none), "") << none;
    }
}

TEST_F(ExeXmlFile, IsWrittenWithItsMissingFolders) {
    const std::string deep = FileSystem::toOwnSeparators(folder.path() + "\\a\\b b\\c\\EXE.xml");
    EXPECT_TRUE(ExeXmlRegistrar::writeExeXml(deep, "text", error));
    EXPECT_EQ(contentOf(deep), "text");
}

TEST_F(ExeXmlFile, LeavesWhatItHeldBeforeInItsOnlyBackup) {
    EXPECT_TRUE(write("one\r\n\x1A\n"));
    EXPECT_FALSE(exists(backup));
    EXPECT_TRUE(write("two"));
    EXPECT_EQ(contentOf(backup), "one\r\n\x1A\n");
    EXPECT_TRUE(write("three"));
    EXPECT_EQ(contentOf(backup), "two");
    EXPECT_EQ(contentOf(path), "three");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ExeXmlFile, WhoseBackupFailsIsWrittenAllTheSameWithAWarning) {
    put(path, "before");
    folder.write("EXE.xml.bak/occupied", "");
    std::string reason;
    ASSERT_FALSE(FileSystem::copyFile(path, backup, reason));
    EXPECT_TRUE(write("after"));
    EXPECT_EQ(contentOf(path), "after");
    EXPECT_EQ(error, "");
    EXPECT_EQ(log.lines(), std::vector<std::string>{"[WARN] Failed to back up EXE.xml before writing: " + path + " (" +
                                                    reason + ")"});
}

TEST_F(ExeXmlFile, InAFoldersPlaceCanNeitherBeBackedUpNorWritten) {
    folder.makeFolder("EXE.xml");
    EXPECT_FALSE(write("text"));
    EXPECT_EQ(error, "Failed to open for write: " + path);
    EXPECT_EQ(log.linesWith("[WARN] Failed to back up EXE.xml before writing: " + path + " (").size(), 1U);
    EXPECT_TRUE(std::filesystem::is_directory(FileSystem::fromBytes(path)));
    EXPECT_FALSE(exists(backup));
}

TEST_F(ExeXmlFile, BehindAFileOrWithoutAPathCannotBeWritten) {
    put(path, "file");
    for (const std::string& behind : {FileSystem::join(path, "EXE.xml"), std::string()}) {
        EXPECT_FALSE(ExeXmlRegistrar::writeExeXml(behind, "text", error));
        EXPECT_EQ(error, "Failed to open for write: " + behind);
    }
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(contentOf(path), "file");
}

} // namespace
