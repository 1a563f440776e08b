// `vantrel demo` with one side of this machine's own: real boards, or a simulator that runs by itself.

#include "tests/system/support/bridge_test.h"
#include "tests/system/support/page_process.h"

namespace {

class LinuxDemo : public BridgeTest {
protected:
    void TearDown() override {
        EXPECT_EQ(demo->interrupt(), 0);
        BridgeTest::TearDown();
    }

    /// With the tests' configuration, and the simulator's address in its home folder.
    void startDemo(const std::string& side) {
        installation = std::make_unique<BridgeInstallation>(files(), simulator ? simulator->port() : std::nullopt);
        ChildProcessSettings settings;
        settings.command = {VANTREL_BUILT_EXECUTABLE, "demo", side, "--config",
                            installation->path("config/config.json")};
        settings.environment = {"HOME=" + installation->path("")};
        demo = std::make_unique<PageProcess>(settings);
        ASSERT_TRUE(demo->serves()) << demo->errorOutput();
    }

    std::unique_ptr<PageProcess> demo;
};

} // namespace

TEST_F(LinuxDemo, TakesThisMachinesBoardsToItsOwnSimulator) {
    UhidBoard& board = plugBoard(model());
    ASSERT_NO_FATAL_FAILURE(startDemo("--real-boards"));
    ASSERT_TRUE(demo->receives("MobiFlight client registered"));
    EXPECT_TRUE(waitForReport(board, reportOf({0x11, 1})));
    board.panel.press(commandButton);
    EXPECT_TRUE(demo->receives("rpn (>H:BUTTON_PRESS)"));
    ASSERT_TRUE(demo->act(R"({"do": "sim", "command": "battery off"})"));
    EXPECT_TRUE(waitForReport(board, reportOf({0x10, 2, 0, 5, 0xE8, 0x03, 50})));
}

TEST_F(LinuxDemo, TakesItsOwnBoardsToThisMachinesSimulator) {
    startSimulator();
    ASSERT_NO_FATAL_FAILURE(startDemo("--real-simulator"));
    ASSERT_TRUE(demo->receives("MobiFlight client registered"));
    EXPECT_TRUE(demo->receives("\"connected\": true"));
    ASSERT_TRUE(demo->act(R"({"do": "press", "board": "PFD", "control": 20})"));
    EXPECT_TRUE(simulator->waitFor(SimulatorRecordKind::Executed, buttonCommand));
}
