#include "logging/logger.h"

#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

constexpr std::uintmax_t rotationSize = 5242880;

std::string content(const std::string& path) {
    std::string text;
    EXPECT_TRUE(FileSystem::readFile(path, text)) << path;
    return text;
}

/// A line without its time stamp, whose form is checked on the way.
std::string withoutTime(const std::string& line) {
    static const std::regex form(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d (.*))");
    std::smatch match;
    EXPECT_TRUE(std::regex_match(line, match, form)) << line;
    return match.empty() ? line : match[1].str();
}

/// The lines of a file that holds nothing else.
Lines linesIn(const std::string& path) {
    std::istringstream stream(content(path));
    Lines lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(withoutTime(line));
    }
    return lines;
}

std::uintmax_t sizeOf(const std::string& path) {
    return std::filesystem::file_size(path);
}

class LoggerFile : public testing::Test {
protected:
    TempFolder folder;
    Logger logger;
    std::string path = folder.path("bridge.log");

    void configure(bool echo = false) { logger.configure(folder.path(), "bridge", echo); }

    void makeFileOfSize(std::uintmax_t size) const {
        std::ofstream(path, std::ios::binary) << 'x';
        std::filesystem::resize_file(path, size);
    }

    std::string backup(int number) const { return path + "." + std::to_string(number); }
    bool hasBackup(int number) const { return FileSystem::exists(backup(number)); }

    /// What a line leaves on standard output.
    std::string echoOf(const std::string& message) {
        testing::internal::CaptureStdout();
        logger.log(Level::Error, message);
        return testing::internal::GetCapturedStdout();
    }
};

TEST_F(LoggerFile, LineHasLocalTimeTheLevelsWordAndTheMessageAndIsOnDiskAtOnce) {
    configure();
    Lines expected;
    for (const char* word : {"[INFO] m", "[WARN] m", "[ERROR] m", "[DEBUG] m", "[INFO] m"}) {
        logger.log(static_cast<Level>(expected.size()), "m");
        expected.emplace_back(word);
        EXPECT_EQ(linesIn(path), expected);
    }
    logger.log(static_cast<Level>(-1), "unknown");
    EXPECT_EQ(linesIn(path).back(), "[INFO] unknown");
}

TEST_F(LoggerFile, LinesBeforeConfigureGoNowhere) {
    EXPECT_EQ(echoOf("lost"), "");
    configure();
    EXPECT_EQ(content(path), "");
}

TEST_F(LoggerFile, ConfigureMakesTheFolderWithItsParents) {
    logger.configure(folder.path("a/b/c"), "bridge", false);
    logger.log(Level::Info, "m");
    EXPECT_EQ(linesIn(folder.path("a/b/c/bridge.log")), Lines{"[INFO] m"});
}

TEST_F(LoggerFile, EmptyDirectoryMeansTheCurrentOne) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(FileSystem::fromBytes(folder.path()));
    logger.configure("", "VantrelBridgeHID", false);
    logger.log(Level::Info, "m");
    logger.close();
    std::filesystem::current_path(before);
    EXPECT_EQ(linesIn(folder.path("VantrelBridgeHID.log")), Lines{"[INFO] m"});
}

TEST_F(LoggerFile, AppendsToTheFileOfAnEarlierRun) {
    folder.write("bridge.log", "earlier\n");
    configure();
    logger.log(Level::Info, "m");
    EXPECT_TRUE(content(path).starts_with("earlier\n"));
    EXPECT_TRUE(content(path).ends_with("[INFO] m\n"));
}

TEST_F(LoggerFile, MessageIsWrittenUnchangedEvenWithLineBreaksAndZeroBytes) {
    configure();
    const std::string message("a\nb\0c", 5);
    logger.log(Level::Info, message);
    EXPECT_TRUE(content(path).ends_with("[INFO] " + message + "\n"));
}

TEST_F(LoggerFile, DebugWritesOnlyWhenEnabled) {
    configure();
    logger.debug("hidden");
    logger.setDebugEnabled(true);
    EXPECT_TRUE(logger.debugEnabledNow());
    logger.debug("shown");
    logger.setDebugEnabled(false);
    logger.debug("hidden again");
    EXPECT_EQ(linesIn(path), Lines{"[DEBUG] shown"});
}

TEST_F(LoggerFile, CloseLetsTheNextLineOpenAgainButNotASilentDebug) {
    configure();
    logger.close();
    std::filesystem::remove(path);
    logger.debug("hidden");
    EXPECT_FALSE(std::filesystem::exists(path));
    logger.log(Level::Info, "first");
    logger.close();
    logger.close();
    logger.log(Level::Info, "second");
    EXPECT_EQ(linesIn(path), (Lines{"[INFO] first", "[INFO] second"}));
}

TEST_F(LoggerFile, EchoGoesToStandardOutputToo) {
    configure();
    EXPECT_EQ(echoOf("quiet"), "");
    std::filesystem::resize_file(path, 0);
    configure(true);
    const std::string echo = echoOf("m");
    EXPECT_EQ(echo, content(path));
    EXPECT_EQ(linesIn(path), Lines{"[ERROR] m"});
}

TEST_F(LoggerFile, FileThatCannotBeOpenedStillEchoesAndTakesALaterLine) {
    folder.makeFolder("bridge.log");
    configure(true);
    EXPECT_TRUE(echoOf("dropped").ends_with("[ERROR] dropped\n"));
    std::filesystem::remove(path);
    echoOf("kept");
    EXPECT_EQ(linesIn(path), Lines{"[ERROR] kept"});
}

TEST_F(LoggerFile, FolderThatCannotBeMadeDropsLinesWithoutThrowing) {
    const std::string file = folder.write("file", "x");
    logger.configure(FileSystem::join(file, "logs"), "bridge", false);
    logger.log(Level::Error, "m");
    EXPECT_EQ(content(file), "x");
}

TEST_F(LoggerFile, RotatesOnlyWhenTheLimitIsReachedBeforeALine) {
    makeFileOfSize(rotationSize - 1);
    configure();
    logger.log(Level::Info, "crosses the limit");
    EXPECT_GT(sizeOf(path), rotationSize);
    EXPECT_FALSE(hasBackup(1));
    logger.log(Level::Info, "in the new file");
    EXPECT_EQ(linesIn(path), Lines{"[INFO] in the new file"});
    EXPECT_GT(sizeOf(backup(1)), rotationSize);
}

TEST_F(LoggerFile, RotatesAtExactlyTheLimitOnDiskButNotForASilentDebug) {
    configure();
    logger.log(Level::Info, "small");
    logger.close();
    makeFileOfSize(rotationSize);
    logger.debug("hidden");
    EXPECT_FALSE(hasBackup(1));
    logger.log(Level::Info, "m");
    EXPECT_EQ(linesIn(path), Lines{"[INFO] m"});
    EXPECT_EQ(sizeOf(backup(1)), rotationSize);
}

TEST_F(LoggerFile, RotatesTheFileThatItHasFilledAndStillHoldsOpen) {
    configure();
    const std::string message(rotationSize / 4, 'x');
    for (int line = 0; line < 4; ++line) {
        EXPECT_LT(sizeOf(path), rotationSize);
        logger.log(Level::Info, message);
    }
    EXPECT_FALSE(hasBackup(1));
    logger.log(Level::Info, "in the new file");
    EXPECT_EQ(linesIn(path), Lines{"[INFO] in the new file"});
    EXPECT_GT(sizeOf(backup(1)), rotationSize);
}

TEST_F(LoggerFile, RotationLosesTheOldestOfFiveBackups) {
    makeFileOfSize(rotationSize);
    for (int number = 1; number <= 5; ++number) {
        folder.write("bridge.log." + std::to_string(number), std::to_string(number));
    }
    configure();
    logger.log(Level::Info, "m");
    EXPECT_EQ(sizeOf(backup(1)), rotationSize);
    for (int number = 2; number <= 5; ++number) {
        EXPECT_EQ(content(backup(number)), std::to_string(number - 1));
    }
    EXPECT_FALSE(hasBackup(6));
}

TEST_F(LoggerFile, RotationMovesBackupsOverAGap) {
    makeFileOfSize(rotationSize);
    folder.write("bridge.log.3", "three");
    configure();
    logger.log(Level::Info, "m");
    EXPECT_EQ(content(backup(4)), "three");
    EXPECT_FALSE(hasBackup(3));
    EXPECT_FALSE(hasBackup(2));
}

TEST_F(LoggerFile, ConfigureDeletesStaleBackupsInsideTheWindowOnly) {
    for (const int number : {5, 6, 7, 37, 38}) {
        folder.write("bridge.log." + std::to_string(number), "old");
    }
    configure();
    for (const int number : {5, 6, 7, 37, 38}) {
        EXPECT_EQ(hasBackup(number), number == 5 || number == 38) << number;
    }
}

TEST_F(LoggerFile, FileThatCannotBeMovedIsKeptAndTriedAgain) {
    makeFileOfSize(rotationSize);
    for (int number = 1; number <= 6; ++number) {
        // No rename can replace a folder that isn't empty.
        folder.write("bridge.log." + std::to_string(number) + "/occupied", "x");
    }
    configure();
    logger.log(Level::Info, "m");
    EXPECT_GT(sizeOf(path), rotationSize);
    for (int number = 1; number <= 6; ++number) {
        std::filesystem::remove_all(backup(number));
    }
    logger.log(Level::Info, "moved now");
    EXPECT_EQ(linesIn(path), Lines{"[INFO] moved now"});
    EXPECT_GT(sizeOf(backup(1)), rotationSize);
}

TEST_F(LoggerFile, LinesOfManyThreadsAreNeverMixed) {
    configure();
    constexpr int linesEach = 200;
    Lines possible;
    std::vector<std::jthread> writers;
    for (const char letter : {'a', 'b', 'c', 'd'}) {
        const std::string message(50, letter);
        possible.push_back("[INFO] " + message);
        writers.emplace_back([this, message] {
            for (int i = 0; i < linesEach; ++i) {
                logger.log(Level::Info, message);
            }
        });
    }
    writers.clear();
    const Lines written = linesIn(path);
    for (const std::string& line : possible) {
        EXPECT_EQ(std::count(written.begin(), written.end(), line), linesEach) << line;
    }
    EXPECT_EQ(written.size(), possible.size() * linesEach);
}

} // namespace
