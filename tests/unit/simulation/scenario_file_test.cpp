#include "simulation/scenarios/scenario_file.h"

#include "platform/file_system.h"
#include "simulation/scenarios/json_text.h"
#include "simulation/scenarios/scenario_configuration.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr std::size_t anyNumber = std::numeric_limits<std::size_t>::max();

Scenario parsed(const std::string& text) {
    Scenario scenario;
    std::string error;
    EXPECT_TRUE(parseScenario("a.scenario", text, scenario, error)) << error;
    return scenario;
}

std::string errorOf(const std::string& text) {
    Scenario scenario;
    std::string error;
    EXPECT_FALSE(parseScenario("a.scenario", text, scenario, error));
    return error;
}

const ScenarioBlock& blockAt(const Scenario& scenario, std::size_t place) {
    return std::get<ScenarioBlock>(scenario.steps.at(place));
}

} // namespace

TEST(ScenarioFile, TitleIsTheFirstComment) {
    EXPECT_EQ(parsed("\n  # A press is sent.\n# More words.\n").title, "A press is sent.");
    EXPECT_EQ(parsed("#\n# Second\n").title, "");
}

TEST(ScenarioFile, CommentsBlankLinesAndCarriageReturnsMeanNothing) {
    const Scenario scenario = parsed("board PFD1\r\n\r\n\t \n# words\n  > start  \r\n");
    ASSERT_EQ(scenario.steps.size(), 1U);
    EXPECT_EQ(std::get<ScenarioInput>(scenario.steps[0]).text, "start");
}

TEST(ScenarioFile, BoardsAreReadWithTheirOptions) {
    const Scenario scenario = parsed("board PFD1\nboard BARE id=none\nboard AUDIO id=E66138A1B2C3D4E5 serial=SN-1 "
                                     "vid=046D pid=c077 port=b protocol=1.12\n");
    EXPECT_EQ(scenario.boards[0].model.boardId->back(), 1);
    EXPECT_FALSE(scenario.boards[1].model.boardId);
    const RigBoard& board = scenario.boards.at(2);
    EXPECT_EQ(board.model.boardId->front(), 0xE6);
    EXPECT_EQ(board.model.serial, "SN-1");
    EXPECT_EQ(board.model.vendorId, 0x046D);
    EXPECT_EQ(board.model.productId, 0xC077);
    EXPECT_EQ(board.port, "b");
    EXPECT_EQ(board.model.protocolInfo->protocolMajor, 1);
    EXPECT_EQ(board.model.protocolInfo->protocolMinor, 12);
}

TEST(ScenarioFile, FolderGivesAllThreeFilesAndItsSettingsCanBeOverridden) {
    TempFolder folder;
    folder.write("set/config.json", R"({"hid": {"vid": "AAAA"}, "logging": {"debug": 0}})");
    folder.write("set/buttons.json", R"({"buttons": []})");
    folder.write("set/hid_event_map.json", R"({"event_types": {"BUTTON": 1}, "control_ids": {"HDG": 21, "LOST": -1}})");
    const std::string path = folder.path("scenarios/a.scenario");
    folder.makeFolder("scenarios");
    Scenario scenario;
    std::string error;
    ASSERT_TRUE(parseScenario(path, "folder ../set\nconfig logging.debug = 1\n", scenario, error)) << error;
    const JsonValue settings = scenarioSettings(scenario);
    EXPECT_EQ(jsonText(*find(settings, "logging")), R"({"debug": 1})");
    EXPECT_EQ(find(*find(settings, "hid"), "vid")->string, "AAAA");
    EXPECT_EQ(scenario.files.at("buttons.json"), R"({"buttons": []})");
    EXPECT_TRUE(scenario.files.contains("hid_event_map.json"));
    ASSERT_EQ(scenario.controls.size(), 1U);
    EXPECT_EQ(scenario.controls[0].name, "HDG");
}

TEST(ScenarioFile, FolderNeedsUsableFiles) {
    const std::string path = FileSystem::join("no/such", "config.json");
    EXPECT_EQ(errorOf("folder no/such\n"), "a.scenario:1:8: " + path + " can't be read");
    TempFolder folder;
    for (const char* file : {"config.json", "buttons.json", "hid_event_map.json"}) {
        folder.write(file, "{}");
    }
    EXPECT_EQ(errorOf("folder " + folder.path() + "\n"), "a.scenario:1:8: Event map missing valid event_types entries");
}

TEST(ScenarioFile, FileBlocksAreVerbatim) {
    const Scenario scenario =
        parsed("file buttons.json <<STOP\n  # no comment\n> no step\nSTOP\nwithout config.json\n");
    EXPECT_EQ(scenario.files.at("buttons.json"), "  # no comment\n> no step\n");
    EXPECT_TRUE(scenario.missingFiles.contains("config.json"));
    EXPECT_TRUE(scenario.steps.empty());
}

TEST(ScenarioFile, ConsecutiveExpectationsAreOneBlock) {
    const Scenario scenario = parsed("board PFD1\n< sim rpn A\n# between\n\n< PFD1 bootsel\n> start\n< exit 0\n");
    ASSERT_EQ(scenario.steps.size(), 3U);
    EXPECT_EQ(blockAt(scenario, 0).expected.size(), 2U);
    EXPECT_EQ(blockAt(scenario, 2).expected.size(), 1U);
    const Scenario silent = parsed("< sim rpn A\n< nothing\n< sim rpn B\n");
    ASSERT_EQ(silent.steps.size(), 3U);
    EXPECT_TRUE(blockAt(silent, 1).expected.empty());
    EXPECT_EQ(blockAt(silent, 1).line, 2U);
}

TEST(ScenarioFile, ExpectationsAreReadWithTheirCounts) {
    struct Case {
        const char* line;
        const char* stream;
        const char* text;
        std::size_t least = 1;
        std::size_t most = 1;
    };
    const Case cases[] = {
        {"PFD1 led   none", "PFD1", "led none"},
        {"PFD1 led flash level=100 count=4 period=150", "PFD1", "led flash count=4 period=150 level=100"},
        {"PFD1 led breathe", "PFD1", "led breathe count=0 period=0 level=0"},
        {"sim rpn 1  (>K:A)", "sim", "rpn 1  (>K:A)"},
        {"log INFO a * b", "log", "INFO a * b"},
        {"exit 1", "exit", "1"},
        {"sim rpn A x3", "sim", "rpn A", 3, 3},
        {"sim rpn A x2+", "sim", "rpn A", 2, anyNumber},
        {"PFD1 led steady 5 x0..1", "PFD1", "led steady 5", 0, 1},
        // These only look like counts.
        {"sim rpn A x", "sim", "rpn A x"},
        {"sim rpn A x3x", "sim", "rpn A x3x"},
        {"sim rpn A x3..1", "sim", "rpn A x3..1"},
        {"sim rpn A x+", "sim", "rpn A x+"},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.line);
        const Scenario scenario = parsed(std::string("board PFD1\nwatch log info\n< ").append(one.line).append("\n"));
        const ScenarioExpectation& read = blockAt(scenario, 0).expected.at(0);
        EXPECT_EQ(read.stream, one.stream);
        EXPECT_EQ(read.text, one.text);
        EXPECT_EQ(read.least, one.least);
        EXPECT_EQ(read.most, one.most);
    }
}

// The scenarios show the usual ones.
TEST(ScenarioFile, UnusualStepsAreRead) {
    const Scenario scenario =
        parsed("board PFD1\ncontrol 21 = HDG\n> PFD1 release 65535\n> PFD1 turn HDG -128 speed=255\n"
               "> PFD1 event 255 0\n> PFD1 fault reads no-report-id\n> PFD1 raw 01 02ff\n> say Good bye.\n");
    EXPECT_EQ(scenario.steps.size(), 6U);
    EXPECT_EQ(std::get<ScenarioInput>(scenario.steps.back()).remark, "Good bye.");
    EXPECT_EQ(std::get<ScenarioInput>(scenario.steps.front()).line, 3U);
}

TEST(ScenarioFile, ErrorsGiveThePlaceAndWhatWasExpected) {
    struct Case {
        const char* text;
        const char* error;
    };
    const Case cases[] = {
        // Unknown words.
        {"board PFD1\n\n> PFD1 pres 5\n", "3:8: unknown thing that a board does \"pres\"; did you mean \"press\"?"},
        {"  bord PFD1\n", "1:3: unknown declaration \"bord\"; did you mean \"board\"?"},
        {"< log WARNING x\n", "1:7: unknown log level \"WARNING\"; known: WARN, ERROR, INFO, DEBUG"},
        {"> plug PFD1\n", "1:8: no board is declared: write \"board PFD1\" above"},
        {"board PFD1\n> plug PFD2\n", "2:8: unknown board \"PFD2\"; did you mean \"PFD1\"?"},
        {"board PFD1\ncontrol 21 = HDG\n> PFD1 press HGD\n", "3:14: unknown control \"HGD\"; did you mean \"HDG\"?"},
        {"board PFD1\n< PDF1 bootsel\n", "2:3: unknown stream \"PDF1\"; did you mean \"PFD1\"?"},
        {"hotplug of\n", "1:9: unknown on or off \"of\"; did you mean \"off\"?"},
        // Missing words and extra ones.
        {">\n", "1:2: expected a step"},
        {"<\n", "1:2: expected what comes: sim, log, exit, nothing or a board"},
        {"< sim rpn\n", "1:10: expected its text"},
        {"control 21\n", "1:11: expected \"=\""},
        {"control 21=HDG\n", "1:9: \"21=HDG\" isn't a valid control number: expected a whole number from 0 to 65535"},
        {"control 21 HDG\n", "1:12: expected \"=\" with blanks around it, not \"HDG\""},
        {"> start now\n", "1:9: didn't expect \"now\" here: the line is complete before it"},
        {"< nothing else\n", "1:11: didn't expect \"else\" here: the line is complete before it"},
        // Numbers, times and bytes.
        {"control 65536 = X\n", "1:9: \"65536\" isn't a valid control number: expected a whole number from 0 to 65535"},
        {"board P\n> P turn 5 +128\n",
         "2:12: \"+128\" isn't a valid count of detents, such as +1 or -3: expected a whole number from "
         "-128 to 127"},
        {"board P\n> P press 5 mode=256\n",
         "2:13: \"256\" isn't a valid value for mode: expected a whole number from 0 to 255"},
        {"board P\n> P press 5 node=1\n", "2:13: unknown option \"node\"; did you mean \"mode\"?"},
        {"board P\n> P press 5 fast\n", "2:13: expected an option, written as name=value, not \"fast\""},
        {"> wait 60\n", "1:8: \"60\" isn't a time: write it as 60ms, 2s or 1.5s"},
        {"> wait soon\n", "1:8: \"soon\" isn't a time: write it as 60ms, 2s or 1.5s"},
        {"board P\n> P raw 0\n", "2:9: \"0\" isn't a sequence of bytes: expected pairs of hexadecimal digits"},
        // The simulator's controls. Their arguments are tested with the controls.
        {"> sim\n", "1:6: expected a control of the simulator"},
        {"> sim batery on\n", "1:7: unknown control of the simulator \"batery\"; did you mean \"battery\"?"},
        {"> sim battery of\n", "1:15: expected \"sim battery on|off\""},
        {"> sim battery\n", "1:7: expected \"sim battery on|off\""},
        {"> sim quit now\n", "1:12: expected \"sim quit\""},
        {"> battery off\n", "1:3: \"battery\" is a control of the simulator: write \"sim battery\""},
        // Boards' options.
        {"board P id=12\n", "1:9: \"12\" isn't an id: expected sixteen hexadecimal digits, or the word none"},
        {"board P vid=12345\n", "1:9: \"12345\" isn't a vid: expected four hexadecimal digits"},
        {"board P protocol=1\n", "1:9: \"1\" isn't a protocol version: write it as 1.2"},
        {"board P seral=1\n", "1:9: unknown option of a board \"seral\"; did you mean \"serial\"?"},
        {"board sim\n", "1:7: \"sim\" has a meaning of its own in a scenario: give the board another name"},
        // Duplicates, order and what isn't watched.
        {"board P\nboard P\n", "2:7: there is already a board \"P\""},
        {"control 5 = A\ncontrol 5 = B\n", "2:9: control 5 already has a name"},
        {"> start\nconsole\n", "2:1: declarations come before the first step; a step begins with > or <"},
        {"< sim dummy\n", "1:7: dummies aren't shown here: write \"watch dummies\" above the first step"},
        {"< log INFO x\n", "1:7: INFO lines aren't shown here: write \"watch log info\" above the first step"},
        {"> console quit\n", "1:11: the bridge has no console here: write \"console\" above the first step"},
        // Blocks.
        {"file config.json <<END\n{}\n", "1:18: no line END ends this block"},
        {"file config.json {}\n", "1:18: expected <<END, which begins a block that a line END ends"},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(errorOf(one.text), std::string("a.scenario:").append(one.error));
    }
    EXPECT_TRUE(errorOf("config a = yes\n").starts_with("a.scenario:1:12: this isn't a JSON value ("));
}

TEST(ScenarioConfiguration, SettingsOverrideTheDefaultsAndEachOther) {
    EXPECT_EQ(jsonText(scenarioSettings(parsed(""))),
              R"({"hid": {"pid": "ABCD", "scanIntervalMs": 250, "vid": "1234"}, "logging": {"debug": 1}, )"
              R"("mappings": {"buttonConfigPath": "buttons.json"}, "outputs": {"debounceMs": 0}})");
    const JsonValue settings =
        scenarioSettings(parsed("config a.b = 1\nconfig a.c = \"x\"\nconfig <<END\n{\"a\": {\"b\": [2]}}\nEND\n"
                                "config logging = null\nconfig hid.pid = null\n"));
    EXPECT_EQ(jsonText(*find(settings, "a")), R"({"b": [2], "c": "x"})");
    EXPECT_EQ(find(settings, "logging"), nullptr);
    EXPECT_EQ(jsonText(*find(settings, "hid")), R"({"scanIntervalMs": 250, "vid": "1234"})");
}

TEST(ScenarioConfiguration, DeclarationsMakeTheFiles) {
    const Scenario scenario = parsed("control 21 = Nav swap\ncommand HDG CW = 1 (>K:A = B)\n"
                                     "command HDG CW PFD = \"x\"\ncommand HDG CCW =\nlist AP\n");
    const auto files = rigSettings(scenario, Pace::fast()).files;
    EXPECT_EQ(files.at("config.json"), jsonText(scenarioSettings(scenario)));
    EXPECT_EQ(files.at("buttons.json"),
              R"json({"buttons": [{"commands": {}, "name": "AP"}, {"commands": {"CCW": {"DEFAULT": ""}, )json"
              R"json("CW": {"DEFAULT": "1 (>K:A = B)", "PFD": "\"x\""}}, "name": "HDG"}]})json");
    EXPECT_EQ(files.at("hid_event_map.json"),
              R"({"control_ids": {"Nav swap": 21}, "event_types": {"BOARD_NOTICE": 4, "BUTTON": 1, "ENCODER": 2}})");
}

TEST(ScenarioConfiguration, NoControlsMakeNoEventMap) {
    const auto files = rigSettings(parsed("without config.json\n"), Pace::fast()).files;
    ASSERT_EQ(files.size(), 1U);
    EXPECT_TRUE(files.contains("buttons.json"));
}

TEST(JsonText, IsReadBackAsItWas) {
    const std::string text = R"({"a": [1, -0.25, true, false, null, {}], "b": "q\"b\\n\u0001é"})";
    const JsonParseResult parsedOnce = JsonParser::parse(text);
    ASSERT_TRUE(parsedOnce.ok) << parsedOnce.error;
    EXPECT_EQ(jsonText(parsedOnce.value), text);
}
