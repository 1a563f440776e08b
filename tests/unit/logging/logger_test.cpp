#include "logging/logger.h"

#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr std::uintmax_t rotationSize = 5242880;

std::string content(const std::string& path) {
    std::string text;
    EXPECT_TRUE(FileSystem::readFile(path, text)) << path;
    return text;
}

std::vector<std::string> lines(const std::string& path) {
    std::istringstream stream(content(path));
    std::vector<std::string> result;
    for (std::string line; std::getline(stream, line);) {
        result.push_back(line);
    }
    return result;
}

/// A line without its time stamp, whose form is checked on the way.
std::string withoutTime(const std::string& line) {
    static const std::regex form(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d (.*))");
    std::smatch match;
    EXPECT_TRUE(std::regex_match(line, match, form)) << line;
    return match.empty() ? line : match[1].str();
}

void makeFileOfSize(const std::string& path, std::uintmax_t size) {
    std::ofstream(path, std::ios::binary) << 'x';
    std::filesystem::resize_file(path, size);
}

class LoggerFile : public testing::Test {
protected:
    TempFolder folder;
    Logger logger;
    std::string path = folder.path("bridge.log");

    void configure(bool echo = false) { logger.configure(folder.path(), "bridge", echo); }
    std::string backup(int number) const { return path + "." + std::to_string(number); }
};

TEST_F(LoggerFile, LineBearsLocalTimeLevelWordAndMessage) {
    configure();
    logger.log(Level::Warn, "SimConnect disconnected: shutdown");
    ASSERT_EQ(lines(path).size(), 1U);
    EXPECT_EQ(withoutTime(lines(path)[0]), "[WARN] SimConnect disconnected: shutdown");
}

TEST_F(LoggerFile, EachLevelHasItsWordAndAnUnknownOneIsInfo) {
    configure();
    for (const int level : {0, 1, 2, 3, 7, -1}) {
        logger.log(static_cast<Level>(level), "m");
    }
    std::vector<std::string> words;
    for (const std::string& line : lines(path)) {
        words.push_back(withoutTime(line));
    }
    EXPECT_EQ(words,
              (std::vector<std::string>{"[INFO] m", "[WARN] m", "[ERROR] m", "[DEBUG] m", "[INFO] m", "[INFO] m"}));
}

TEST_F(LoggerFile, LineIsOnDiskWhenLogReturns) {
    configure();
    logger.log(Level::Info, "first");
    EXPECT_EQ(lines(path).size(), 1U);
    logger.log(Level::Info, "second");
    EXPECT_EQ(lines(path).size(), 2U);
}

TEST_F(LoggerFile, LinesBeforeConfigureGoNowhere) {
    testing::internal::CaptureStdout();
    logger.log(Level::Error, "lost");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    configure();
    EXPECT_EQ(content(path), "");
}

TEST_F(LoggerFile, ConfigureMakesTheFolderWithItsParents) {
    logger.configure(folder.path("a/b/c"), "bridge", false);
    logger.log(Level::Info, "m");
    EXPECT_EQ(lines(folder.path("a/b/c/bridge.log")).size(), 1U);
}

TEST_F(LoggerFile, EmptyDirectoryMeansTheCurrentOne) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(FileSystem::fromBytes(folder.path()));
    logger.configure("", "VantrelBridgeHID", false);
    logger.log(Level::Info, "m");
    logger.close();
    std::filesystem::current_path(before);
    EXPECT_EQ(lines(folder.path("VantrelBridgeHID.log")).size(), 1U);
}

TEST_F(LoggerFile, AppendsToTheFileOfAnEarlierRun) {
    folder.write("bridge.log", "earlier\n");
    configure();
    logger.log(Level::Info, "m");
    ASSERT_EQ(lines(path).size(), 2U);
    EXPECT_EQ(lines(path)[0], "earlier");
}

TEST_F(LoggerFile, MessageIsWrittenUnchangedEvenWithLineBreaksAndZeroBytes) {
    configure();
    const std::string message("a\nb\0c", 5);
    logger.log(Level::Info, message);
    EXPECT_NE(content(path).find("[INFO] " + message + "\n"), std::string::npos);
}

TEST_F(LoggerFile, DebugWritesOnlyWhenEnabled) {
    configure();
    logger.debug("hidden");
    logger.setDebugEnabled(true);
    EXPECT_TRUE(logger.debugEnabledNow());
    logger.debug("shown");
    logger.setDebugEnabled(false);
    logger.debug("hidden again");
    ASSERT_EQ(lines(path).size(), 1U);
    EXPECT_EQ(withoutTime(lines(path)[0]), "[DEBUG] shown");
}

TEST_F(LoggerFile, LogAtLevelDebugWritesThoughDebugIsOff) {
    configure();
    logger.log(Level::Debug, "m");
    ASSERT_EQ(lines(path).size(), 1U);
    EXPECT_EQ(withoutTime(lines(path)[0]), "[DEBUG] m");
}

TEST_F(LoggerFile, CloseLetsTheNextLineOpenAgainButNotASilentDebug) {
    configure();
    logger.close();
    std::filesystem::remove(path);
    logger.debug("hidden");
    EXPECT_FALSE(std::filesystem::exists(path));
    logger.log(Level::Info, "m");
    EXPECT_EQ(lines(path).size(), 1U);
    logger.close();
    logger.close();
    logger.log(Level::Info, "m");
    EXPECT_EQ(lines(path).size(), 2U);
}

TEST_F(LoggerFile, EchoGoesToStandardOutputToo) {
    configure(true);
    testing::internal::CaptureStdout();
    logger.log(Level::Error, "m");
    std::string echoed = testing::internal::GetCapturedStdout();
    ASSERT_FALSE(echoed.empty());
    EXPECT_EQ(echoed.back(), '\n');
    echoed.pop_back();
    EXPECT_EQ(echoed, lines(path)[0]);
}

TEST_F(LoggerFile, WithoutEchoStandardOutputStaysEmpty) {
    configure();
    testing::internal::CaptureStdout();
    logger.log(Level::Error, "m");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(LoggerFile, FileThatCannotBeOpenedStillEchoes) {
    folder.makeFolder("bridge.log");
    configure(true);
    testing::internal::CaptureStdout();
    logger.log(Level::Error, "m");
    EXPECT_NE(testing::internal::GetCapturedStdout().find("[ERROR] m\n"), std::string::npos);
}

TEST_F(LoggerFile, FolderThatCannotBeMadeDropsLinesWithoutThrowing) {
    const std::string file = folder.write("file", "x");
    logger.configure(FileSystem::join(file, "logs"), "bridge", false);
    logger.log(Level::Error, "m");
    EXPECT_EQ(content(file), "x");
}

TEST_F(LoggerFile, FileOpenedLateReceivesTheNextLine) {
    folder.makeFolder("bridge.log");
    configure();
    logger.log(Level::Info, "dropped");
    std::filesystem::remove(path);
    logger.log(Level::Info, "kept");
    ASSERT_EQ(lines(path).size(), 1U);
    EXPECT_EQ(withoutTime(lines(path)[0]), "[INFO] kept");
}

TEST_F(LoggerFile, RotatesOnlyWhenTheLimitIsReachedBeforeALine) {
    makeFileOfSize(path, rotationSize - 1);
    configure();
    logger.log(Level::Info, "crosses the limit");
    EXPECT_GT(std::filesystem::file_size(path), rotationSize);
    EXPECT_FALSE(std::filesystem::exists(backup(1)));
    logger.log(Level::Info, "in the new file");
    ASSERT_EQ(lines(path).size(), 1U);
    EXPECT_EQ(withoutTime(lines(path)[0]), "[INFO] in the new file");
    EXPECT_GT(std::filesystem::file_size(backup(1)), rotationSize);
}

TEST_F(LoggerFile, RotatesAtExactlyTheLimit) {
    makeFileOfSize(path, rotationSize);
    configure();
    logger.log(Level::Info, "m");
    EXPECT_EQ(lines(path).size(), 1U);
    EXPECT_EQ(std::filesystem::file_size(backup(1)), rotationSize);
}

TEST_F(LoggerFile, RotatesTheFileThatItHasFilledAndStillHoldsOpen) {
    configure();
    const std::string message(rotationSize / 4, 'x');
    int written = 0;
    while (FileSystem::fileSize(path) < rotationSize && written < 5) {
        logger.log(Level::Info, message);
        ++written;
    }
    EXPECT_EQ(written, 4);
    EXPECT_FALSE(std::filesystem::exists(backup(1)));
    logger.log(Level::Info, "in the new file");
    EXPECT_EQ(lines(path).size(), 1U);
    EXPECT_EQ(lines(backup(1)).size(), 4U);
}

TEST_F(LoggerFile, DebugLineThatIsNotWrittenRotatesNothing) {
    makeFileOfSize(path, rotationSize);
    configure();
    logger.debug("m");
    EXPECT_EQ(std::filesystem::file_size(path), rotationSize);
    EXPECT_FALSE(std::filesystem::exists(backup(1)));
}

TEST_F(LoggerFile, RotationLosesTheOldestOfFiveBackups) {
    makeFileOfSize(path, rotationSize);
    for (int number = 1; number <= 5; ++number) {
        folder.write("bridge.log." + std::to_string(number), std::to_string(number));
    }
    configure();
    logger.log(Level::Info, "m");
    EXPECT_EQ(std::filesystem::file_size(backup(1)), rotationSize);
    for (int number = 2; number <= 5; ++number) {
        EXPECT_EQ(content(backup(number)), std::to_string(number - 1));
    }
    EXPECT_FALSE(std::filesystem::exists(backup(6)));
}

TEST_F(LoggerFile, RotationMovesBackupsOverAGap) {
    makeFileOfSize(path, rotationSize);
    folder.write("bridge.log.3", "three");
    configure();
    logger.log(Level::Info, "m");
    EXPECT_EQ(content(backup(4)), "three");
    EXPECT_FALSE(std::filesystem::exists(backup(3)));
    EXPECT_FALSE(std::filesystem::exists(backup(2)));
}

TEST_F(LoggerFile, ConfigureDeletesStaleBackupsInsideTheWindowOnly) {
    for (const int number : {5, 6, 7, 37, 38}) {
        folder.write("bridge.log." + std::to_string(number), "old");
    }
    configure();
    EXPECT_TRUE(std::filesystem::exists(backup(5)));
    EXPECT_FALSE(std::filesystem::exists(backup(6)));
    EXPECT_FALSE(std::filesystem::exists(backup(7)));
    EXPECT_FALSE(std::filesystem::exists(backup(37)));
    EXPECT_TRUE(std::filesystem::exists(backup(38)));
}

TEST_F(LoggerFile, FileThatCannotBeMovedIsKeptAndTriedAgain) {
    makeFileOfSize(path, rotationSize);
    // A folder that isn't empty can be replaced by no rename.
    folder.write("bridge.log.1/occupied", "x");
    folder.write("bridge.log.2/occupied", "x");
    for (int number = 3; number <= 5; ++number) {
        folder.write("bridge.log." + std::to_string(number) + "/occupied", "x");
    }
    folder.write("bridge.log.6/occupied", "x");
    configure();
    logger.log(Level::Info, "m");
    EXPECT_GT(std::filesystem::file_size(path), rotationSize);
    for (int number = 1; number <= 6; ++number) {
        std::filesystem::remove_all(backup(number));
    }
    logger.log(Level::Info, "moved now");
    EXPECT_EQ(lines(path).size(), 1U);
    EXPECT_GT(std::filesystem::file_size(backup(1)), rotationSize);
}

TEST_F(LoggerFile, SizeIsThatOnDiskAndNotACounter) {
    configure();
    logger.log(Level::Info, "small");
    logger.close();
    makeFileOfSize(path, rotationSize);
    logger.log(Level::Info, "m");
    EXPECT_EQ(lines(path).size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(backup(1)));
}

TEST_F(LoggerFile, LinesOfManyThreadsAreNeverMixed) {
    configure();
    constexpr int threads = 4;
    constexpr int linesEach = 200;
    std::vector<std::thread> writers;
    for (int thread = 0; thread < threads; ++thread) {
        writers.emplace_back([this, thread] {
            for (int i = 0; i < linesEach; ++i) {
                logger.log(Level::Info, std::string(50, static_cast<char>('a' + thread)));
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    const std::vector<std::string> written = lines(path);
    EXPECT_EQ(written.size(), static_cast<std::size_t>(threads * linesEach));
    for (const std::string& line : written) {
        const std::string message = withoutTime(line);
        ASSERT_EQ(message.size(), std::string("[INFO] ").size() + 50);
        EXPECT_EQ(message.find_first_not_of(message.back(), 7), std::string::npos);
    }
}

TEST(LoggerSingleton, IsOneObjectAndUsableBeforeConfigure) {
    EXPECT_EQ(&Logger::instance(), &Logger::instance());
    Logger::instance().log(Level::Info, "nowhere");
    logInfo("nowhere");
    logWarn("nowhere");
    logError("nowhere");
}

} // namespace
