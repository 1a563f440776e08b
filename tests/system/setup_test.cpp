// `vantrel setup` on this machine's boards.

#include "tests/system/support/bridge_test.h"
#include "tests/system/support/page_process.h"

namespace {

class LinuxSetup : public BridgeTest {
protected:
    void TearDown() override {
        EXPECT_EQ(setup->interrupt(), 0);
        BridgeTest::TearDown();
    }

    /// Beside a bridge and the simulator's address, but without a configuration.
    void startSetup() {
        installation = std::make_unique<BridgeInstallation>(BridgeFiles(), simulator->port());
        const std::string program = installation->path("vantrel");
        installProgram(VANTREL_BUILT_EXECUTABLE, program);
        setup = std::make_unique<PageProcess>(
            ChildProcessSettings{.command = {program, "setup", "--config", installation->path("config/config.json")}});
        ASSERT_TRUE(setup->serves()) << setup->errorOutput();
    }

    std::unique_ptr<PageProcess> setup;
};

} // namespace

TEST_F(LinuxSetup, LeadsFromNoConfigurationToExactlyTheCommandThatWasAssigned) {
    constexpr std::uint16_t knob = 91;
    const std::string executed = "1 (>K:HEADING_BUG_INC)";
    startSimulator();
    UhidBoard& board = plugBoard(model());
    UhidBoard& other = plugBoard(model(2));
    ASSERT_NO_FATAL_FAILURE(startSetup());
    ASSERT_TRUE(setup->receives(nameOf(board)));
    ASSERT_TRUE(setup->receives(nameOf(other)));
    board.panel.turn(knob, 1);
    ASSERT_TRUE(setup->receives("\"control\":91"));
    ASSERT_TRUE(setup->act(R"({"do": "name", "control": 91, "name": "HDG"})"));
    ASSERT_TRUE(setup->act(R"~({"do": "assign", "control": "HDG", "knob": true, "action": "CW", "role": "DEFAULT",
                               "command": "(>K:HEADING_BUG_INC)"})~"));
    ASSERT_TRUE(setup->act(R"({"do": "simulator", "virtual": false})"));
    ASSERT_TRUE(setup->receives(R"({"virtual":false,"state":"is ready"})"));
    ASSERT_TRUE(setup->act(R"~({"do": "try", "command": "(>K:HEADING_BUG_INC)"})~"));
    EXPECT_TRUE(simulator->waitFor(SimulatorRecordKind::Executed, executed, 1));
    ASSERT_TRUE(setup->act(R"({"do": "save"})"));
    ASSERT_TRUE(setup->act(R"({"do": "startBridge"})"));
    // The page also shows an older log, so its lines don't prove that this bridge is ready.
    ASSERT_TRUE(simulator->waitFor(SimulatorRecordKind::Command, "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)"));
    other.panel.turn(knob, 1);
    EXPECT_TRUE(simulator->waitFor(SimulatorRecordKind::Executed, executed, 2));
    EXPECT_EQ(simulator->texts(SimulatorRecordKind::Executed), std::vector(2, executed));
}
