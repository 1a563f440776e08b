#include "platform/file_system.h"
#include "simulation/cockpit/replay_mode.h"
#include "simulation/rig/rig_observer.h"
#include "simulation/scenarios/scenario_configuration.h"
#include "tests/support/temp_folder.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

constexpr const char* board = "E66138A1B2C3D4E5";
constexpr const char* stamp = "2026-01-31 12:00:0";

/// A trace log of the bridge itself, of a scenario without steps.
std::string recordedLog() {
    Scenario scenario;
    std::string error;
    EXPECT_TRUE(parseScenario("recording", R"(# A recording.
board PFD id=E66138A1B2C3D4E5
board MFD id=E66138A1B2C3D4F6
config hid.trace = 1
)",
                              scenario, error))
        << error;
    BridgeRig rig(rigSettings(scenario, Pace::fast()));
    RigObserver observer(rig);
    EXPECT_TRUE(rig.setUp(error)) << error;
    rig.plugAll();
    rig.startBridge();
    rig.board("PFD").press(5);
    rig.board("PFD").release(5);
    rig.board("PFD").turn(91, 2);
    rig.board("MFD").turn(91, 1, 4, 1);
    rig.board("MFD").press(21, 1);
    std::size_t handled = 0;
    EXPECT_TRUE(waitUntil([&] {
        for (const Observation& item : observer.take()) {
            handled += item.text.starts_with("DEBUG HID event from ") ? 1 : 0;
        }
        return handled >= 5;
    }));
    std::string log;
    const auto path = rig.filesFolder() / "VantrelBridge" / "logs" / "VantrelBridgeHID.log";
    EXPECT_TRUE(FileSystem::readFile(FileSystem::toBytes(path), log));
    return log;
}

struct Outcome {
    int code = 0;
    std::string output;

    bool says(const std::string& text) const { return output.find(text) != std::string::npos; }
};

class ReplayTest : public testing::Test {
protected:
    Outcome replay(const std::string& log, const std::string& configPath = "", bool fast = true) {
        CockpitOptions options;
        options.replayLog = folder.write("trace.log", log);
        options.configPath = configPath;
        options.fast = fast;
        std::ostringstream screen;
        const int code = runReplay(options, screen);
        return {code, screen.str()};
    }

    static std::string pressLine(int second, const std::string& name = board, int control = 5) {
        std::string data(64, '0');
        data.replace(0, 2, "01");
        data.replace(4, 2, "01");
        data.replace(8, 2, control == 5 ? "05" : "06");
        data.replace(12, 2, "01");
        return std::string(stamp)
            .append(std::to_string(second))
            .append(" [DEBUG] HID IN device=")
            .append(name)
            .append(" bytes=32 data=")
            .append(data)
            .append("\n");
    }

    TempFolder folder;
};

} // namespace

TEST_F(ReplayTest, PlaysALogOfTheBridgeItself) {
    const Outcome outcome = replay(recordedLog());
    EXPECT_EQ(outcome.code, 0) << outcome.output;
    EXPECT_TRUE(outcome.says("5 reports of 2 boards, played with the sample set")) << outcome.output;
    EXPECT_TRUE(outcome.says("E66138A1B2C3D4E5 press AP")) << outcome.output;
    EXPECT_TRUE(outcome.says("sim rpn (>K:AP_MASTER)")) << outcome.output;
    EXPECT_TRUE(outcome.says("E66138A1B2C3D4E5 turn HDG +2")) << outcome.output;
    EXPECT_TRUE(outcome.says("sim rpn (>K:HEADING_BUG_INC)")) << outcome.output;
    EXPECT_TRUE(outcome.says("E66138A1B2C3D4F6 turn HDG +1 speed=4 mode=1")) << outcome.output;
    EXPECT_TRUE(outcome.says("sim rpn (A:AUTOPILOT HEADING LOCK DIR, degrees) 10 + dnor near (>K:HEADING_BUG_SET)"))
        << outcome.output;
    EXPECT_TRUE(outcome.says("sim rpn (>H:AS1000_MFD_SOFTKEYS_1)")) << outcome.output;
    EXPECT_TRUE(outcome.says("played, 0 lines skipped; the simulator received 5 commands and events"))
        << outcome.output;
}

TEST_F(ReplayTest, PlaysWithAUsersOwnConfiguration) {
    folder.write("buttons.json",
                 R"json({"buttons": [{"name": "X", "commands": {"PRESS": {"DEFAULT": "(>K:MINE)"}}}]})json");
    folder.write("hid_event_map.json", R"json({"event_types": {"BUTTON": 1}, "control_ids": {"X": 5}})json");
    const std::string config = folder.write(
        "config.json",
        R"json({"hid": {"vid": "4711", "pid": "0815"}, "mappings": {"buttonConfigPath": "buttons.json"}})json");
    const Outcome outcome = replay(pressLine(0) + pressLine(0, "SN-1", 6), config);
    EXPECT_EQ(outcome.code, 0) << outcome.output;
    EXPECT_TRUE(outcome.says("press X")) << outcome.output;
    EXPECT_TRUE(outcome.says("sim rpn (>K:MINE)")) << outcome.output;
    EXPECT_TRUE(outcome.says("SN-1 press 6")) << outcome.output;
    EXPECT_TRUE(outcome.says("sim event TOGGLE_FLIGHT_DIRECTOR")) << outcome.output;
}

TEST_F(ReplayTest, KeepsTheLogsPace) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(replay(pressLine(1) + pressLine(4), "", false).code, 0);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
}

TEST_F(ReplayTest, TellsBadLinesAndPlaysTheOthers) {
    const Outcome outcome = replay(pressLine(0) + "[DEBUG] HID IN device=B bytes=1 data=01\n" + pressLine(1, board, 6));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_TRUE(outcome.says("trace.log:2: skipped: the line's beginning is missing")) << outcome.output;
    EXPECT_TRUE(outcome.says("sim rpn (>K:AP_MASTER)")) << outcome.output;
    EXPECT_TRUE(outcome.says("sim rpn (>K:TOGGLE_FLIGHT_DIRECTOR)")) << outcome.output;
    EXPECT_TRUE(outcome.says("played, 1 lines skipped; the simulator received 2 commands")) << outcome.output;
}

TEST_F(ReplayTest, PlaysMoreReportsThanABoardKeeps) {
    std::string log;
    for (int i = 0; i < 200; ++i) {
        log += pressLine(0);
    }
    const Outcome outcome = replay(log);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_TRUE(outcome.says("the simulator received 200 commands"))
        << outcome.output.substr(outcome.output.size() - 400);
}

TEST_F(ReplayTest, RefusesALogWithoutReports) {
    const Outcome outcome = replay("2026-01-31 12:00:00 [INFO] Application run loop started\n");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_TRUE(outcome.says("no report of a board stands in it")) << outcome.output;
}

TEST_F(ReplayTest, RefusesFilesThatCannotBeRead) {
    CockpitOptions options;
    options.replayLog = folder.path("absent.log");
    std::ostringstream screen;
    EXPECT_EQ(runReplay(options, screen), 1);
    EXPECT_TRUE(screen.str().ends_with("absent.log: can't be read\n")) << screen.str();
    const Outcome outcome = replay(pressLine(0), folder.path("absent.json"));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_TRUE(outcome.says("absent.json: ")) << outcome.output;
}
