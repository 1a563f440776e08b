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

TEST_F(ExeXmlFile, IsReadByteForByte) {
    const std::string text("\xEF\xBB\xBF<a>\r\n\n\r\x1A\0\xFF end", 17);
    put(path, text);
    EXPECT_EQ(ExeXmlRegistrar::readExeXml(path), text);
}

TEST_F(ExeXmlFile, ReadsAsEmptyWhenItIsAbsentOrAFolder) {
    EXPECT_EQ(ExeXmlRegistrar::readExeXml(path), "");
    EXPECT_EQ(ExeXmlRegistrar::readExeXml(folder.path()), "");
    EXPECT_EQ(ExeXmlRegistrar::readExeXml(""), "");
}

TEST_F(ExeXmlFile, IsWrittenByteForByte) {
    const std::string text("a\r\nb\nc\r\0\x1A\xFF", 10);
    EXPECT_TRUE(write(text));
    EXPECT_EQ(contentOf(path), text);
    EXPECT_EQ(error, "");
}

TEST_F(ExeXmlFile, HoldsNothingOfALongerTextBeforeIt) {
    put(path, std::string(100000, 'x'));
    EXPECT_TRUE(write("short"));
    EXPECT_EQ(contentOf(path), "short");
    EXPECT_TRUE(write(""));
    EXPECT_EQ(contentOf(path), "");
}

TEST_F(ExeXmlFile, IsWrittenWholeHoweverLong) {
    const std::string text(10'000'000, 'x');
    EXPECT_TRUE(write(text));
    EXPECT_TRUE(contentOf(path) == text);
}

TEST_F(ExeXmlFile, GetsTheFoldersThatLack) {
    const std::string deep = FileSystem::toOwnSeparators(folder.path() + "\\a\\b b\\c\\EXE.xml");
    EXPECT_TRUE(ExeXmlRegistrar::writeExeXml(deep, "text", error));
    EXPECT_EQ(contentOf(deep), "text");
}

TEST_F(ExeXmlFile, WithoutOneBeforeHasNoBackup) {
    EXPECT_TRUE(write("new"));
    EXPECT_FALSE(exists(backup));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ExeXmlFile, LeavesWhatItHeldInTheBackup) {
    put(path, "one\r\n\x1A\n");
    EXPECT_TRUE(write("two"));
    EXPECT_EQ(contentOf(backup), "one\r\n\x1A\n");
}

TEST_F(ExeXmlFile, HasOneBackupOnlyOfTheLatestWrite) {
    put(path, "a long first text");
    EXPECT_TRUE(write("two"));
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

TEST_F(ExeXmlFile, BehindAFileInItsFoldersPlaceCannotBeWritten) {
    put(path, "file");
    const std::string behind = FileSystem::join(path, "EXE.xml");
    EXPECT_FALSE(ExeXmlRegistrar::writeExeXml(behind, "text", error));
    EXPECT_EQ(error, "Failed to open for write: " + behind);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(contentOf(path), "file");
}

TEST_F(ExeXmlFile, OfAnEmptyPathCannotBeWritten) {
    EXPECT_FALSE(ExeXmlRegistrar::writeExeXml("", "text", error));
    EXPECT_EQ(error, "Failed to open for write: ");
}

TEST_F(ExeXmlFile, InAFolderOfForeignBytesIsReadWrittenAndBackedUp) {
    const std::string strange = FileSystem::join(FileSystem::join(folder.path(), "E\x80ro"), "EXE.xml");
    EXPECT_TRUE(ExeXmlRegistrar::writeExeXml(strange, "one", error));
    EXPECT_TRUE(ExeXmlRegistrar::writeExeXml(strange, "two", error));
    EXPECT_EQ(ExeXmlRegistrar::readExeXml(strange), "two");
    EXPECT_EQ(contentOf(strange + ".bak"), "one");
}

} // namespace
