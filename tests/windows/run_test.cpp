// How a run begins and ends: exit codes, instances, and where configuration and log are.

#include "tests/windows/installed_bridge.h"

#include <gtest/gtest.h>
#include <shlobj.h>

namespace {

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

/// What was logged after an earlier state of the log, which may have been rotated away.
std::string linesSince(const std::string& before) {
    const std::string now = perMachineLog();
    return now.starts_with(before) ? now.substr(before.size()) : now;
}

class BridgeRun : public testing::Test {
protected:
    /// Runs until the bridge ends by itself or, once it waits for commands, by "quit".
    DWORD runToTheEnd(const std::string& arguments = "") const {
        const ChildPipe input;
        input.write("quit\n");
        return bridge.start("--console " + arguments, {input.readEnd, nullptr, nullptr})->exitCode();
    }

    /// Byte 0x80 is the euro sign in Windows-1252, and no character of Latin-1.
    const InstalledBridge bridge{"E\x80ro \xE9t\xE9"};
};

TEST_F(BridgeRun, WithTheConsoleLogsBesideTheExecutable) {
    bridge.configure();
    const std::string before = perMachineLog();
    EXPECT_EQ(runToTheEnd(), 0U);
    EXPECT_EQ(perMachineLog(), before);
    EXPECT_TRUE(bridge.hasLogged("[INFO] Configuration loaded")) << bridge.log();
    EXPECT_TRUE(bridge.hasLogged(stoppedLine)) << bridge.log();
}

TEST_F(BridgeRun, WithoutTheConsoleLogsIntoThePerMachineFolder) {
    bridge.configure();
    const std::string before = perMachineLog();
    // The lock of the bridge before may outlive its process for a moment, and a second instance ends at once.
    std::unique_ptr<ChildProcess> process;
    const auto hasStarted = [&] {
        if (!process || !process->isRunning()) {
            process = bridge.start("");
        }
        return linesSince(before).find(startedLine) != std::string::npos;
    };
    EXPECT_TRUE(waitUntil(hasStarted, std::chrono::seconds(60)));
    EXPECT_FALSE(bridge.has("VantrelBridgeHID.log"));
}

TEST_F(BridgeRun, MissingConfigurationEndsWithOneAndSaysWhereItLooked) {
    const std::string perMachine = perMachineFolder() + "\\VantrelBridge\\config.json";
    ASSERT_FALSE(FileSystem::exists(perMachine));
    EXPECT_EQ(runToTheEnd(), 1U);
    const std::string error = "Config file not found: " + perMachine +
                              " (default search order: " + bridge.path("config\\config.json") + "; " + perMachine + ")";
    EXPECT_TRUE(bridge.hasLogged("[ERROR] " + error)) << bridge.log();
    EXPECT_TRUE(bridge.hasLogged("[ERROR] Failed to initialize: " + error)) << bridge.log();
}

TEST_F(BridgeRun, ConfigurationPathMayBeRelativeHoldBlanksAndBeOutsideLatin1) {
    const std::string absolute = bridge.write("\x8E\x80/\x9Fx.json", shortConfig);
    bridge.write("my files/mine.json", shortConfig);
    for (const std::string folder : {"\x8E\x80", "my files"}) {
        bridge.write(folder + "/buttons.json", R"({"buttons":[]})");
    }
    for (const std::string& path : {absolute, std::string("my files/mine.json"), std::string("my files\\mine.json")}) {
        EXPECT_EQ(runToTheEnd("--config \"" + path + '"'), 0U) << path;
    }
}

TEST_F(BridgeRun, PathOfNoFileIsLoggedAsGivenEvenWithWildcards) {
    bridge.configure();
    for (const std::string path : {"other\\mine.json", "config\\*.json"}) {
        EXPECT_EQ(runToTheEnd("--config " + path), 1U);
        EXPECT_TRUE(bridge.hasLogged("Config file not found: " + path + " (")) << bridge.log();
    }
}

TEST_F(BridgeRun, OptionsWithoutTheirPathInUpperCaseAndUnknownOnesAreIgnored) {
    bridge.configure();
    EXPECT_EQ(runToTheEnd("--config \"\""), 0U);
    EXPECT_EQ(runToTheEnd("--CONFIG nowhere.json --help --config"), 0U);
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

    const InstalledBridge elsewhere;
    EXPECT_EQ(elsewhere.start("--console")->exitCode(), 0U);
    EXPECT_EQ(elsewhere.log(), "");
}

TEST_F(BridgeRun, EndOfOneInstanceLeavesRoomForTheNext) {
    bridge.configure();
    bridge.start("--console"); // Ended at once, by force.
    EXPECT_EQ(runToTheEnd(), 0U);
    EXPECT_EQ(runToTheEnd(), 0U);
}

} // namespace
