#include "companion/recording/record_text.h"
#include "companion/recording/replay_input.h"
#include "hid/hex_text.h"
#include "hid/hid_log_lines.h"
#include "simulation/boards/virtual_board.h"
#include "simulation/scenarios/scenario_player.h"
#include "tests/unit/mapping/mapping_settings.h"

#include <sstream>

namespace {

constexpr std::int64_t begin = 5'000'000'000;
constexpr const char* pfd = "E66138A1B2C3D4E5";

constexpr const char* configText =
    R"({"hid": {"vid": "16C0", "pid": "27db"}, "mappings": {"buttonConfigPath": "my.json"}})";
constexpr const char* buttonsText =
    R"json({"buttons": [{"name": "AP", "commands": {"PRESS": {"DEFAULT": "(>K:AP_MASTER)"}}}]})json";

class RecordingTest : public testing::Test, protected MappingSettings {
protected:
    RecordingTest() {
        config.hid.vid = "0x16C0";
        config.hid.pid = "27db";
        eventMap.controlIds = {{20, "AP"},    {21, "Com Swap"}, {22, "7"},      {23, " "},    {24, "TWICE"},
                               {25, "TWICE"}, {26, "A\nB"},     {70000, "FAR"}, {-1, "BELOW"}};
    }

    RecordText text() const { return {{config, buttons, eventMap, ""}, begin}; }

    static LiveReport report(int ms, const HidProtocol::HidEvent& event, const std::string& board = pfd) {
        const HidProtocol::Report bytes = inputReport(event);
        return {begin + ms * msNs, board, 0, {bytes.begin(), bytes.end()}, {}, ""};
    }

    /// The record's step of one report.
    std::string step(const HidProtocol::HidEvent& event) const {
        RecordText record = text();
        record.arrived({pfd, 0, ""}, begin);
        return record.reported(report(0, event));
    }

    static ReplayInput replayed(const std::string& record) {
        ReplayInput input;
        std::string error;
        EXPECT_TRUE(readReplay("r", record, input, error)) << error << '\n' << record;
        return input;
    }
};

} // namespace

TEST_F(RecordingTest, EachEventIsAStepOfAScenario) {
    struct Row {
        HidProtocol::HidEvent event;
        const char* step;
    };
    for (const auto& [event, expected] :
         {Row{button(20, 1), "press AP"}, Row{button(20, 0, 1), "release AP mode=1"}, Row{button(21, 2), "hold 21"},
          Row{button(22, 4), "hold 22 value=4"}, Row{button(23, 9), "event 1 23 value=9"},
          Row{button(24, 1), "press 24"}, Row{encoder(26, 3), "turn 26 +3"},
          Row{encoder(20, -2, 4), "turn AP -2 speed=4"}, Row{encoder(99, 0), "turn 99 0"},
          Row{notice(255), "notice mode=255"}}) {
        EXPECT_EQ(step(event), std::string("> board1 ") + expected + '\n');
    }
}

TEST_F(RecordingTest, IsReadBackAsItWasSent) {
    RecordText record = text();
    std::string written = record.header(configText, buttonsText);
    // The record's time begins here.
    constexpr std::int64_t firstArrival = begin + 40 * msNs;
    written += record.arrived({pfd, 0, "PFD"}, firstArrival);
    std::vector<LiveReport> sent;
    int ms = 50;
    for (int value = -128; value < 128; ++value, ms += 7) {
        for (std::uint8_t type = 1; type <= 4; ++type) {
            const auto byte = static_cast<std::uint8_t>(value);
            sent.push_back(report(ms, {.type = type,
                                       // A notice usually has no control.
                                       .controlId = static_cast<std::uint16_t>(byte % 8 == 0 ? 0 : 20 + byte % 8),
                                       .value = static_cast<std::int8_t>(value),
                                       .speed = byte,
                                       .mode = byte}));
            written += record.reported(sent.back());
        }
    }
    sent.push_back({begin + ms * msNs, pfd, 0, {1, 2, 0xFF}, {}, ""});
    written += record.reported(sent.back());
    written += record.left({pfd, 0, ""}, begin + ms * msNs);
    written += record.arrived({"another", 1, ""}, begin + ms * msNs);
    sent.push_back(report(ms, button(20, 1), "another"));
    written += record.reported(sent.back());
    written += record.arrived({pfd, 2, ""}, begin + ms * msNs);

    const ReplayInput input = replayed(written);
    ASSERT_EQ(input.reports.size(), sent.size());
    for (std::size_t i = 0; i < sent.size(); ++i) {
        EXPECT_EQ(input.reports[i].bytes, sent[i].bytes) << i;
        EXPECT_EQ(input.reports[i].board, sent[i].board) << i;
        EXPECT_EQ(input.reports[i].time, sent[i].time - firstArrival) << i;
    }
}

TEST_F(RecordingTest, PlaysInTheScenarioPlayerWithItsConfiguration) {
    RecordText record = text();
    std::string written = record.header(configText, buttonsText);
    written += record.arrived({pfd, 0, ""}, begin);
    written += record.reported(report(1, button(20, 1)));
    // Until the press has had its effect; pulled before, the board may take the report with it.
    written += "< sim rpn (>K:AP_MASTER)\n";
    written += record.arrived({"S1", 1, ""}, begin);
    written += record.left({pfd, 0, ""}, begin);
    Scenario scenario;
    std::string error;
    ASSERT_TRUE(parseScenario("r", written, scenario, error)) << error;
    std::ostringstream screen;
    EXPECT_TRUE(ScenarioPlayer(scenario, true, screen).play()) << screen.str();
    for (const char* const line : {"sim rpn (>K:AP_MASTER)", "> plug board2", "> unplug board1"}) {
        EXPECT_NE(screen.str().find(line), std::string::npos) << line << " isn't in\n" << screen.str();
    }
}

TEST_F(RecordingTest, ReplaysScenariosAndTraceLogs) {
    const HidProtocol::Report press = inputReport(button(20, 1));
    const ReplayInput scenario =
        replayed("board P id=none serial=S1\nboard Q\n> Q press 20 times=2 every=10\n> wait 1s\n"
                 "> P press 20\n> pause 5ms\n> P raw 01\n");
    ASSERT_EQ(scenario.reports.size(), 4U);
    EXPECT_EQ(scenario.reports[0].board, "0000000000000002");
    EXPECT_EQ(scenario.reports[1].time, 10 * msNs);
    EXPECT_EQ(scenario.reports[2].board, "S1");
    EXPECT_EQ(scenario.reports[3].time, 1015 * msNs);
    const std::string start = "2026-01-31 12:00:0";
    const ReplayInput log = replayed(start + "0 [DEBUG] " + hidReportLine(pfd, press) + '\n' + start + "2 [DEBUG] " +
                                     hidReportLine("B", press) + "\nHID IN device=cut\n");
    ASSERT_EQ(log.reports.size(), 2U);
    EXPECT_EQ(log.reports[1].time, 2000 * msNs);
    EXPECT_EQ(log.reports[1].index, 1);
    // No pause is longer than a day.
    const ReplayInput slow = replayed("board P\n> P press 1\n> wait 99999999999s\n> P press 1\n");
    EXPECT_EQ(slow.reports[1].time, 86'400'000 * msNs);
    EXPECT_EQ(log.problems, std::vector<std::string>{"r:3: the line's beginning is missing"});
}

TEST_F(RecordingTest, SaysWhatIsWrongWithARecord) {
    struct Row {
        const char* text;
        const char* error;
    };
    for (const auto& [record, expected] :
         {Row{"", "r: it contains no board reports; a record does, and so does a log written with --hid-trace"},
          Row{"> P press 5\n", "r:1:3: unknown step \"P\""}}) {
        ReplayInput input;
        std::string error;
        EXPECT_FALSE(readReplay("r", record, input, error));
        EXPECT_TRUE(error.starts_with(expected)) << error;
    }
}
