#include "companion/demo/replay_mode.h"
#include "hid/hex_text.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

constexpr const char* pfd = "E66138A1B2C3D4E5";
constexpr const char* mfd = "E66138A1B2C3D4F6";

/// A line of the bridge's log with a report. `fields` are its type, a byte, the control's two, value, speed and mode.
std::string reportLine(int second, const std::string& device, const std::vector<std::uint8_t>& fields) {
    std::vector<std::uint8_t> report{1, 0};
    report.insert(report.end(), fields.begin(), fields.end());
    report.resize(32);
    return "2026-01-31 12:00:0" + std::to_string(second) + " [DEBUG] HID IN device=" + device +
           " bytes=32 data=" + hexText(report) + '\n';
}

std::string pressLine(int second, std::uint8_t control = 5) {
    return reportLine(second, pfd, {1, 0, control, 0, 1});
}

class ReplayTest : public testing::Test {
protected:
    PlayOutcome outcome(const std::string& path, const std::string& configPath = "", bool fast = true) {
        return runReplay({path, configPath, fast}, screen, error);
    }
    /// Whether the whole log was played.
    bool replay(const std::string& log, const std::string& configPath = "", bool fast = true) {
        return outcome(folder.write("trace.log", log), configPath, fast) == PlayOutcome::AsExpected;
    }
    void expectOutput(const std::vector<std::string>& texts) const {
        for (const std::string& text : texts) {
            EXPECT_NE(screen.str().find(text), std::string::npos) << text << " isn't in\n" << screen.str();
        }
    }

    TempFolder folder;
    std::ostringstream screen;
    std::string error;
};

} // namespace

TEST_F(ReplayTest, PlaysEachReportWithTheSampleSet) {
    EXPECT_TRUE(replay(pressLine(0) + reportLine(0, pfd, {2, 0, 91, 0, 2}) +
                       reportLine(0, mfd, {2, 0, 91, 0, 1, 4, 1}) + reportLine(0, mfd, {1, 0, 21, 0, 1, 0, 1})));
    expectOutput({"4 reports of 2 boards, played with the sample set", "E66138A1B2C3D4E5 press AP",
                  "sim rpn (>K:AP_MASTER)", "E66138A1B2C3D4E5 turn HDG +2", "sim rpn (>K:HEADING_BUG_INC)",
                  "E66138A1B2C3D4F6 turn HDG +1 speed=4 mode=1",
                  "sim rpn (A:AUTOPILOT HEADING LOCK DIR, degrees) 10 + dnor near (>K:HEADING_BUG_SET)",
                  "sim rpn (>H:AS1000_MFD_SOFTKEYS_1)", "played, 0 lines skipped; the simulator received 5 commands"});
}

TEST_F(ReplayTest, PlaysWithAUsersOwnConfiguration) {
    folder.write("buttons.json",
                 R"json({"buttons": [{"name": "X", "commands": {"PRESS": {"DEFAULT": "(>K:MINE)"}}}]})json");
    folder.write("hid_event_map.json", R"json({"event_types": {"BUTTON": 1}, "control_ids": {"X": 5}})json");
    const std::string config = folder.write(
        "config.json",
        R"json({"hid": {"vid": "4711", "pid": "0815"}, "mappings": {"buttonConfigPath": "buttons.json"}})json");
    EXPECT_TRUE(replay(pressLine(0) + reportLine(0, "SN-1", {1, 0, 6, 0, 1}), config));
    expectOutput({"press X", "sim rpn (>K:MINE)", "SN-1 press 6", "sim event TOGGLE_FLIGHT_DIRECTOR"});
}

TEST_F(ReplayTest, KeepsTheLogsPace) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(replay(pressLine(1) + pressLine(4), "", false));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
}

TEST_F(ReplayTest, ReportsBadLinesAndPlaysTheOthers) {
    EXPECT_FALSE(replay(pressLine(0) + "[DEBUG] HID IN device=B bytes=1 data=01\n" + pressLine(1, 6)));
    expectOutput({"trace.log:2: skipped: the line's beginning is missing", "sim rpn (>K:AP_MASTER)",
                  "sim rpn (>K:TOGGLE_FLIGHT_DIRECTOR)", "played, 1 line skipped; the simulator received 2 commands"});
}

TEST_F(ReplayTest, PlaysMoreReportsThanABoardKeeps) {
    std::string log;
    for (int i = 0; i < 200; ++i) {
        log += pressLine(0);
    }
    EXPECT_TRUE(replay(log));
    expectOutput({"the simulator received 200 commands"});
}

TEST_F(ReplayTest, RefusesALogWithoutReportsAndFilesThatCannotBeRead) {
    const std::string empty = folder.write("empty.log", "2026-01-31 12:00:00 [INFO] Application run loop started\n");
    EXPECT_EQ(outcome(empty), PlayOutcome::NotPlayed);
    EXPECT_NE(error.find("it contains no board reports"), std::string::npos) << error;
    EXPECT_EQ(outcome(empty, folder.path("absent.json")), PlayOutcome::NotPlayed);
    EXPECT_NE(error.find("absent.json: "), std::string::npos) << error;
    EXPECT_EQ(outcome(folder.path("absent.log")), PlayOutcome::NotPlayed);
    EXPECT_EQ(error, folder.path("absent.log") + ": can't be read");
    EXPECT_EQ(screen.str(), "");
}
