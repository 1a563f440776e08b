// The process as its user meets it: exit codes, outputs, log, signals. tests/windows has the like for Windows.

#include "tests/system/support/bridge_test.h"

#include <filesystem>

namespace {

class LinuxProcess : public BridgeTest {
protected:
    void expectStop(int signal) {
        bridge->process().sendSignal(signal);
        EXPECT_EQ(bridge->process().waitForExit(), 0);
        EXPECT_TRUE(bridge->log().ends_with("[INFO] Application run loop stopped\n"));
    }

    /// Beside the executable, as console mode has it.
    bool hasLogOfItsOwn() const { return std::filesystem::exists(installation->path("VantrelBridgeHID.log")); }
};

} // namespace

TEST_F(LinuxProcess, WithoutAConfigurationEndsWithOneAndReportsWhereItLooked) {
    installation = std::make_unique<BridgeInstallation>(BridgeFiles{}, 1);
    const std::string common = TestedSystem::machineDataFolder() + "/VantrelBridge/config.json";
    const std::string error = "Config file not found: " + common +
                              " (default search order: " + installation->path("config/config.json") + "; " + common +
                              ")\n";
    startBridge({});
    EXPECT_EQ(bridge->process().waitForExit(), 1);
    EXPECT_EQ(bridge->countInLog("[ERROR] " + error), 1U);
    EXPECT_EQ(bridge->output(), "");
    EXPECT_FALSE(hasLogOfItsOwn());

    startBridge();
    EXPECT_EQ(bridge->process().waitForExit(), 1);
    EXPECT_EQ(bridge->countInLog("[ERROR] Failed to initialize: " + error), 1U);
    EXPECT_EQ(bridge->output(), bridge->log());
}

TEST_F(LinuxProcess, GoesOnWhenItsInputEndsAndStopsOnASignal) {
    ASSERT_NO_FATAL_FAILURE(startSession());
    bridge->process().closeInput();
    EXPECT_TRUE(pressWorks(*boards[0]));
    expectStop(SIGINT);
    EXPECT_TRUE(waitForReport(*boards[0], reportOf({0x11, 0})));
    EXPECT_EQ(bridge->output(), bridge->log());
}

TEST_F(LinuxProcess, LivesWithoutAReaderOfItsOutput) {
    installation = std::make_unique<BridgeInstallation>(files(), 1);
    ChildProcessSettings settings;
    settings.closeOutput = true;
    bridge = std::make_unique<BridgeProcess>(*installation, std::vector<std::string>{"--console"}, settings);
    ASSERT_TRUE(bridge->waitForLog("Application run loop started\n"));
    expectStop(SIGTERM);
}

TEST_F(LinuxProcess, LeavesSilentlyWhenAnotherRunsAndStartsOnceThatIsKilled) {
    startBridge({});
    ASSERT_TRUE(bridge->waitForLog("Application run loop started\n"));
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, std::vector<std::string>{"--console"}}) {
        BridgeProcess second(*installation, arguments);
        EXPECT_EQ(second.process().waitForExit(), 0);
        EXPECT_EQ(second.output(), "");
    }
    EXPECT_EQ(bridge->countInLog("Initializing application"), 1U);
    EXPECT_FALSE(hasLogOfItsOwn());

    // Without a console it doesn't handle signals.
    bridge->process().sendSignal(SIGINT);
    EXPECT_EQ(bridge->process().waitForExit(), 128 + SIGINT);
    startBridge();
    EXPECT_TRUE(bridge->waitForLog("Application run loop started\n"));
}
