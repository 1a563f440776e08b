// How a run begins and ends: exit codes, instances, and where configuration and log lie.

#include "tests/windows/installed_bridge.h"

#include <gtest/gtest.h>
#include <shlobj.h>

namespace {

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

std::string perMachineFolder() {
    std::array<char, MAX_PATH> folder{};
    SHGetFolderPathA(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, folder.data());
    return folder.data();
}

std::string perMachineLog() {
    std::string text;
    FileSystem::readFile(perMachineFolder() + "\\VantrelBridge\\logs\\VantrelBridgeHID.log", text);
    return text;
}

/// What has come behind an earlier state of the log, which may have been rotated away.
std::string linesSince(const std::string& before) {
    const std::string now = perMachineLog();
    return now.starts_with(before) ? now.substr(before.size()) : now;
}

class BridgeRun : public testing::Test {
protected:
    /// Runs until the bridge ends by itself or, once it waits for commands, by "quit".
    DWORD runToTheEnd(const std::string& arguments) const {
        const ChildPipe input;
        input.write("quit\n");
        return bridge.start("--console " + arguments, {input.readEnd, nullptr, nullptr})->exitCode();
    }

    InstalledBridge bridge;
};

TEST_F(BridgeRun, EndsWithZeroAfterQuit) {
    bridge.configure();
    EXPECT_EQ(runToTheEnd(""), 0U);
    EXPECT_TRUE(contains(bridge.log(), "[INFO] Stop requested from console")) << bridge.log();
    EXPECT_TRUE(contains(bridge.log(), stoppedLine)) << bridge.log();
}

TEST_F(BridgeRun, MissingConfigurationEndsWithOneAndTellsWhereItLooked) {
    const std::string perMachine = perMachineFolder() + "\\VantrelBridge\\config.json";
    ASSERT_FALSE(FileSystem::exists(perMachine));
    EXPECT_EQ(runToTheEnd(""), 1U);
    const std::string error = "Config file not found: " + perMachine +
                              " (default search order: " + bridge.path("config\\config.json") + "; " + perMachine + ")";
    EXPECT_TRUE(contains(bridge.log(), "[ERROR] " + error)) << bridge.log();
    EXPECT_TRUE(contains(bridge.log(), "[ERROR] Failed to initialize: " + error)) << bridge.log();
}

TEST_F(BridgeRun, BrokenConfigurationEndsWithOne) {
    bridge.write("config/config.json", "{");
    EXPECT_EQ(runToTheEnd(""), 1U);
    EXPECT_TRUE(contains(bridge.log(), "[ERROR] Failed to initialize: ")) << bridge.log();
}

TEST_F(BridgeRun, RelativeConfigurationPathStartsAtTheWorkingFolder) {
    bridge.write("other/mine.json", shortConfig);
    bridge.write("other/buttons.json", R"({"buttons":[]})");
    EXPECT_EQ(runToTheEnd("--config other/mine.json"), 0U);
    EXPECT_TRUE(contains(bridge.log(), stoppedLine)) << bridge.log();
}

TEST_F(BridgeRun, RelativePathOfNoFileIsToldAsGiven) {
    bridge.configure();
    EXPECT_EQ(runToTheEnd("--config other\\mine.json"), 1U);
    EXPECT_TRUE(contains(bridge.log(), "Config file not found: other\\mine.json (")) << bridge.log();
}

TEST_F(BridgeRun, WildcardsInArgumentsAreTakenAsTheyStand) {
    bridge.configure();
    EXPECT_EQ(runToTheEnd("--config config\\*.json"), 1U);
    EXPECT_TRUE(contains(bridge.log(), "Config file not found: config\\*.json (")) << bridge.log();
}

TEST_F(BridgeRun, PathInQuotesMayHoldBlanks) {
    bridge.write("my files/mine.json", shortConfig);
    bridge.write("my files/buttons.json", R"({"buttons":[]})");
    EXPECT_EQ(runToTheEnd("--config \"my files\\mine.json\""), 0U);
}

TEST_F(BridgeRun, ConfigurationOptionWithoutItsPathLeadsToTheSearch) {
    bridge.configure();
    EXPECT_EQ(runToTheEnd("--config"), 0U);
    EXPECT_EQ(runToTheEnd("--config \"\""), 0U);
}

TEST_F(BridgeRun, OptionsInUpperCaseAndUnknownOnesAreIgnored) {
    bridge.configure();
    EXPECT_EQ(runToTheEnd("--CONFIG nowhere.json --help"), 0U);
}

TEST_F(BridgeRun, SecondInstanceEndsWithZeroAndLeavesTheLogAlone) {
    bridge.configure();
    const auto first = bridge.start("--console");
    ASSERT_TRUE(bridge.waitForLog(commandsLine));
    // The first one writes nothing more by itself without a board.
    ASSERT_TRUE(bridge.waitForLog("[INFO] Waiting for HID device to connect"));
    const std::string before = bridge.log();
    ChildPipe output;
    EXPECT_EQ(bridge.start("--console", {nullptr, output.writeEnd, output.writeEnd})->exitCode(), 0U);
    EXPECT_EQ(bridge.log(), before);
    EXPECT_EQ(output.readAll(), "");
    EXPECT_TRUE(first->isRunning());
}

TEST_F(BridgeRun, SecondInstanceIsOneFromAnotherFolderToo) {
    bridge.configure();
    const auto first = bridge.start("--console");
    ASSERT_TRUE(bridge.waitForLog(commandsLine));
    const InstalledBridge other;
    EXPECT_EQ(other.start("--console")->exitCode(), 0U);
    EXPECT_EQ(other.log(), "");
}

TEST_F(BridgeRun, EndOfOneInstanceLeavesRoomForTheNext) {
    bridge.configure();
    bridge.start("--console"); // Ended at once, by force.
    EXPECT_EQ(runToTheEnd(""), 0U);
    EXPECT_EQ(runToTheEnd(""), 0U);
}

TEST_F(BridgeRun, LogsIntoThePerMachineFolderWithoutTheConsole) {
    bridge.configure();
    const std::string before = perMachineLog();
    // The lock of the bridge before may outlive its process for a moment, and a second instance ends at once.
    std::unique_ptr<ChildProcess> process;
    const auto hasStarted = [&] {
        if (!process || !process->isRunning()) {
            process = bridge.start("");
        }
        return contains(linesSince(before), startedLine);
    };
    EXPECT_TRUE(waitUntil(hasStarted, std::chrono::seconds(60)));
    EXPECT_FALSE(bridge.has("VantrelBridgeHID.log"));
}

TEST_F(BridgeRun, LogsBesideTheExecutableWithTheConsole) {
    bridge.configure();
    const std::string before = perMachineLog();
    EXPECT_EQ(runToTheEnd(""), 0U);
    EXPECT_EQ(perMachineLog(), before);
    EXPECT_TRUE(bridge.has("VantrelBridgeHID.log"));
}

// Byte 0x80 is the euro sign in Windows-1252, and no character of Latin-1.
TEST(BridgeInAFolderOutsideLatin1, FindsItsConfigurationAndWritesItsLog) {
    const InstalledBridge bridge("E\x80ro \xE9t\xE9");
    bridge.configure();
    const ChildPipe input;
    input.write("quit\n");
    EXPECT_EQ(bridge.start("--console", {input.readEnd, nullptr, nullptr})->exitCode(), 0U);
    EXPECT_TRUE(contains(bridge.log(), "[INFO] Configuration loaded")) << bridge.log();
    EXPECT_TRUE(contains(bridge.log(), stoppedLine)) << bridge.log();
}

TEST(BridgeInAFolderOutsideLatin1, TellsItsPathsByteForByte) {
    const InstalledBridge bridge("E\x80ro");
    EXPECT_EQ(bridge.start("--console")->exitCode(), 1U);
    EXPECT_TRUE(contains(bridge.log(), "(default search order: " + bridge.path("config\\config.json") + "; "))
        << bridge.log();
}

TEST(BridgeInAFolderOutsideLatin1, TakesAConfigurationFromAnother) {
    const InstalledBridge bridge;
    const std::string config = bridge.write("\x8E\x80/\x9Fx.json", shortConfig);
    bridge.write("\x8E\x80/buttons.json", R"({"buttons":[]})");
    const ChildPipe input;
    input.write("quit\n");
    const auto process = bridge.start("--console --config \"" + config + '"', {input.readEnd, nullptr, nullptr});
    EXPECT_EQ(process->exitCode(), 0U);
    EXPECT_TRUE(contains(bridge.log(), stoppedLine)) << bridge.log();
}

} // namespace
