// The process as its user meets it: options, exit codes, outputs, log.

#include "tests/system/support/bridge_test.h"

#include <csignal>
#include <filesystem>

namespace {

class Process : public BridgeTest {
protected:
    /// The run's exit code, with the files as they are in `given`.
    std::optional<int> runWith(const BridgeFiles& given, const std::vector<std::string>& arguments) {
        installation = std::make_unique<BridgeInstallation>(given, 1);
        startBridge(arguments);
        return bridge->process().waitForExit();
    }

    std::string output() { return bridge->output(); }
};

/// What only signals can show.
class LinuxProcess : public Process {};

} // namespace

TEST_F(Process, WithoutAConfigurationEndsWithOneAndSaysWhereItLooked) {
    EXPECT_EQ(runWith({}, {"--console"}), 1);
    const std::string beside = TestedSystem::pathSeenByBridge(installation->path("config/config.json"));
    const std::string common =
        TestedSystem::pathSeenByBridge(TestedSystem::machineDataFolder() + "/VantrelBridge/config.json");
    const std::string text =
        "Config file not found: " + common + " (default search order: " + beside + "; " + common + ")\n";
    EXPECT_EQ(bridge->countInLog("[ERROR] " + text), 1U);
    EXPECT_EQ(bridge->countInLog("[ERROR] Failed to initialize: " + text), 1U);
    EXPECT_EQ(output(), bridge->log());
}

TEST_F(Process, WithoutAConsoleLogsTheMissingConfigurationInThePerMachineFolderOnly) {
    EXPECT_EQ(runWith({}, {}), 1);
    EXPECT_EQ(bridge->countInLog("[ERROR] Config file not found: "), 1U);
    EXPECT_EQ(output(), "");
    EXPECT_FALSE(std::filesystem::exists(installation->path("VantrelBridgeHID.log")));
}

TEST_F(Process, TakesTheConfigurationThatItIsGiven) {
    const TempFolder elsewhere;
    const std::string given = elsewhere.write("mine.json", "{}");
    EXPECT_EQ(runWith(configuration.files(), {"--console", "--config", TestedSystem::pathSeenByBridge(given)}), 1);
    EXPECT_EQ(bridge->countInLog("[ERROR] Missing 'hid' section\n"), 1U);
}

TEST_F(Process, EchoesItsLogOnTheConsole) {
    startBridge();
    ASSERT_TRUE(bridge->waitForLog("Console commands: bootsel, quit\n"));
    bridge->process().writeLine("QUIT");
    EXPECT_EQ(bridge->process().waitForExit(), 0);
    EXPECT_EQ(output(), bridge->log());
    EXPECT_EQ(bridge->countInLog("[INFO] Stop requested from console\n"), 1U);
}

TEST_F(Process, GoesOnWhenItsInputEnds) {
    ASSERT_NO_FATAL_FAILURE(startSession());
    bridge->process().closeInput();
    boards[0]->panel.press(Controls::button);
    EXPECT_TRUE(waitForRpn("(>H:BUTTON_PRESS)"));
    killBridge();
}

TEST_F(LinuxProcess, StopsInOrderAfterItsInputHasEnded) {
    startBridge();
    ASSERT_TRUE(bridge->waitForLog("Application run loop started\n"));
    bridge->process().closeInput();
    bridge->process().sendSignal(SIGINT);
    EXPECT_EQ(bridge->process().waitForExit(), 0);
}

TEST_F(LinuxProcess, StopsInOrderAfterItsOutputHasBeenClosed) {
    installation = std::make_unique<BridgeInstallation>(configuration.files(), 1);
    ChildProcessSettings settings;
    settings.closeOutputAfterLine = true;
    bridge = std::make_unique<BridgeProcess>(*installation, std::vector<std::string>{"--console"}, settings);
    ASSERT_TRUE(bridge->waitForLog("Application run loop started\n"));
    bridge->process().sendSignal(SIGTERM);
    EXPECT_EQ(bridge->process().waitForExit(), 0);
    EXPECT_TRUE(bridge->log().ends_with("[INFO] Application run loop stopped\n"));
}

TEST_F(LinuxProcess, StopsInOrderOnEachControlSignal) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        boards.clear();
        bridge.reset();
        installation.reset();
        ASSERT_NO_FATAL_FAILURE(startSession());
        bridge->process().sendSignal(number);
        EXPECT_EQ(bridge->process().waitForExit(), 0) << number;
        EXPECT_TRUE(bridge->log().ends_with("[INFO] Application run loop stopped\n"));
        EXPECT_TRUE(waitForReport(*boards[0], reportOf({0x11, 0})));
    }
}

TEST_F(LinuxProcess, WithoutAConsoleHasNoControlHandler) {
    startBridge({});
    ASSERT_TRUE(bridge->waitForLog("Application run loop started\n"));
    bridge->process().sendSignal(SIGINT);
    EXPECT_EQ(bridge->process().waitForExit(), 128 + SIGINT);
}

TEST_F(Process, LeavesSilentlyWhenAnotherRuns) {
    startBridge({});
    ASSERT_TRUE(bridge->waitForLog("Application run loop started\n"));
    const std::string before = bridge->log();
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, std::vector<std::string>{"--console"}}) {
        BridgeProcess second(*installation, arguments);
        EXPECT_EQ(second.process().waitForExit(), 0);
        EXPECT_EQ(second.output(), "");
    }
    EXPECT_EQ(countOf(bridge->log(), "Initializing application"), 1U);
    EXPECT_FALSE(std::filesystem::exists(installation->path("VantrelBridgeHID.log")));
    EXPECT_TRUE(bridge->log().starts_with(before));
    killBridge();
}

TEST_F(Process, StartsAgainAfterOneThatWasKilled) {
    startBridge();
    ASSERT_TRUE(bridge->waitForLog("Application run loop started\n"));
    killBridge();
    startBridge();
    EXPECT_TRUE(bridge->waitForLog("Application run loop started\n"));
}

TEST_F(Process, TracesReportsWhenToldOnTheCommandLine) {
    BridgeFiles files = configuration.files();
    const auto replace = [&](const std::string& from, const std::string& to) {
        files.config.replace(files.config.find(from), from.size(), to);
    };
    replace("\"trace\": 1", "\"trace\": 0");
    replace("\"debug\": 1", "\"debug\": 0");
    UhidBoard& board = plugBoard(model());
    installation = std::make_unique<BridgeInstallation>(files, 1);
    startBridge({"--console", "--hid-trace"});
    ASSERT_TRUE(bridge->waitForLog("HID manager started\n"));
    board.panel.press(0x1234, 1);
    EXPECT_TRUE(bridge->waitForLog("[DEBUG] HID IN device=" + nameOf(board) + " bytes=32 data=0100010034120100010000" +
                                   std::string(42, '0') + "\n"));
    killBridge();
}
