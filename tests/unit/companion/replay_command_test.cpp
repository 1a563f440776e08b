// `vantrel replay` from its arguments to what it prints and sends.

#include "companion/cli/exit_code.h"
#include "companion/cli/program.h"
#include "tests/support/temp_folder.h"
#include "tests/unit/companion/simulator_platform.h"

#include <sstream>

namespace {

/// "AP" is pressed.
const std::string trace =
    "2026-01-31 12:00:00 [DEBUG] HID IN device=A bytes=32 data=0100010005000100" + std::string(48, '0') + '\n';
const std::string apLine = "AP (5) press: sends (>K:AP_MASTER)\n";

class ReplayCommandTest : public testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(simulator.start(0, error)) << error;
        platform.host.installControlHandler = [](ControlHandler) {};
    }

    int replay(const std::string& text, std::vector<const char*> options = {}) {
        const std::string log = folder.write("trace.log", text);
        std::vector<const char*> arguments{"vantrel", "replay", log.c_str(), "--config", config.c_str()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runVantrel(platform, static_cast<int>(arguments.size()), arguments.data(), out, err);
    }

    VirtualSimulator simulator;
    std::atomic<bool> processRuns{true};
    std::ostringstream out;
    std::ostringstream err;

private:
    const TempFolder folder;
    const std::string config = folder.write(
        "config.json", R"({"hid": {"vid": "1234", "pid": "ABCD"}, "mappings": {"buttonConfigPath": "buttons.json"}})");
    const std::string buttons =
        folder.write("buttons.json",
                     R"json({"buttons": [{"name": "AP", "commands": {"PRESS": {"DEFAULT": "(>K:AP_MASTER)"}}}]})json");
    const std::string eventMap =
        folder.write("hid_event_map.json", R"({"event_types": {"BUTTON": 1}, "control_ids": {"AP": 5}})");
    Platform platform = simulatorPlatform(simulator, processRuns);
};

} // namespace

TEST_F(ReplayCommandTest, ShowsWhatTheConfigurationMakesOfTheRecordAndSendsNothing) {
    EXPECT_EQ(replay(trace), ExitCode::good);
    EXPECT_TRUE(out.str().ends_with(apLine + "1 report; the bridge sends something for 1\n")) << out.str();
    EXPECT_EQ(err.str(), "");
    EXPECT_EQ(simulator.sessionCount(), 0U);
}

TEST_F(ReplayCommandTest, PlaysTheRestOfALogWithALineThatCannotBeRead) {
    EXPECT_EQ(replay(trace + trace.substr(0, 60)), ExitCode::findings);
    EXPECT_NE(out.str().find(apLine), std::string::npos);
    EXPECT_NE(err.str().find("trace.log:2: "), std::string::npos) << err.str();
}

TEST_F(ReplayCommandTest, SaysThatThereIsNothingToPlay) {
    EXPECT_EQ(replay(""), ExitCode::couldNotLook);
    EXPECT_EQ(out.str(), "");
    EXPECT_NE(err.str().find("trace.log:"), std::string::npos) << err.str();
}

TEST_F(ReplayCommandTest, SendsTheCommandsToTheSimulator) {
    EXPECT_EQ(replay(trace, {"--send", "--timeout", "60"}), ExitCode::good) << err.str();
    EXPECT_NE(out.str().find(apLine), std::string::npos);
    EXPECT_TRUE(simulator.waitForText(SimulatorRecordKind::Executed, "1 (>K:AP_MASTER)"));
}

TEST_F(ReplayCommandTest, FailsWithoutASimulatorToSendTo) {
    processRuns = false;
    EXPECT_EQ(replay(trace, {"--send"}), ExitCode::couldNotLook);
    EXPECT_EQ(out.str(), "");
    EXPECT_NE(err.str().find("the simulator doesn't run"), std::string::npos) << err.str();
}
