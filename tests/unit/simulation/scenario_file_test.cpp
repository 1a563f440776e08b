#include "simulation/scenarios/scenario_file.h"

#include "platform/file_system.h"
#include "simulation/scenarios/json_text.h"
#include "simulation/scenarios/scenario_configuration.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

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

/// The texts of the expectations of a scenario with one board and one block.
std::vector<std::string> expectedTexts(const std::string& lines) {
    const Scenario scenario = parsed("board PFD1\nwatch dummies\nwatch log info\n" + lines);
    std::vector<std::string> texts;
    for (const ScenarioExpectation& one : blockAt(scenario, 0).expected) {
        texts.push_back(one.stream + ": " + one.text);
    }
    return texts;
}

ScenarioExpectation expectation(const std::string& line) {
    return blockAt(parsed("board PFD1\n" + line + "\n"), 0).expected.at(0);
}

using Texts = std::vector<std::string>;

} // namespace

TEST(ScenarioFile, EmptyTextIsAScenarioWithoutSteps) {
    const Scenario scenario = parsed("");
    EXPECT_TRUE(scenario.boards.empty());
    EXPECT_TRUE(scenario.steps.empty());
}

TEST(ScenarioFile, TitleIsTheFirstComment) {
    EXPECT_EQ(parsed("\n  # A press is sent.\n# More words.\n").title, "A press is sent.");
    EXPECT_EQ(parsed("#\n# Second\n").title, "");
}

TEST(ScenarioFile, CommentsBlankLinesAndCarriageReturnsMeanNothing) {
    const Scenario scenario = parsed("board PFD1\r\n\r\n\t \n# words\n  > start  \r\n");
    ASSERT_EQ(scenario.steps.size(), 1U);
    EXPECT_EQ(std::get<ScenarioInput>(scenario.steps[0]).text, "start");
}

TEST(ScenarioFile, BoardsHaveIdsByTheirOrder) {
    const Scenario scenario = parsed("board PFD1\nboard MFD1\n");
    EXPECT_EQ(scenario.boards[0].model.boardId->back(), 1);
    EXPECT_EQ(scenario.boards[1].model.boardId->back(), 2);
}

TEST(ScenarioFile, BoardOptionsAreRead) {
    const Scenario scenario =
        parsed("board PFD1 id=E66138A1B2C3D4E5 serial=SN-1 vid=046D pid=c077 port=b protocol=1.12\n");
    const RigBoard& board = scenario.boards.at(0);
    EXPECT_EQ(board.model.boardId, (HidProtocol::BoardId{0xE6, 0x61, 0x38, 0xA1, 0xB2, 0xC3, 0xD4, 0xE5}));
    EXPECT_EQ(board.model.serial, "SN-1");
    EXPECT_EQ(board.model.vendorId, 0x046D);
    EXPECT_EQ(board.model.productId, 0xC077);
    EXPECT_EQ(board.port, "b");
    EXPECT_EQ(board.model.protocolInfo->protocolMajor, 1);
    EXPECT_EQ(board.model.protocolInfo->protocolMinor, 12);
}

TEST(ScenarioFile, BoardMayHaveNoId) {
    EXPECT_FALSE(parsed("board PFD1 id=none\n").boards.at(0).model.boardId);
}

TEST(ScenarioFile, ControlNamesMayHoldBlanks) {
    const Scenario scenario = parsed("control 41 = Nav swap\n");
    EXPECT_EQ(scenario.controls.at(0).id, 41);
    EXPECT_EQ(scenario.controls.at(0).name, "Nav swap");
}

TEST(ScenarioFile, CommandRoleIsDefaultWhenLeftOut) {
    const Scenario scenario = parsed("command HDG CW = 1 (>K:A = B)\ncommand HDG CW PFD =\n");
    EXPECT_EQ(scenario.commands[0].role, "DEFAULT");
    EXPECT_EQ(scenario.commands[0].text, "1 (>K:A = B)");
    EXPECT_EQ(scenario.commands[1].role, "PFD");
    EXPECT_EQ(scenario.commands[1].text, "");
}

TEST(ScenarioFile, SettingsAreLaidOverEachOther) {
    const Scenario scenario = parsed("config a.b = 1\nconfig a.c = \"x\"\nconfig <<END\n{\"a\": {\"b\": [2]}}\nEND\n");
    EXPECT_EQ(jsonText(*find(scenarioSettings(scenario), "a")), R"({"b": [2], "c": "x"})");
}

TEST(ScenarioFile, FolderGivesAllThreeFilesAndItsSettingsCanBeOverlaid) {
    TempFolder folder;
    folder.write("set/config.json", R"({"hid": {"vid": "AAAA", "pid": "BBBB"}, "logging": {"debug": 0}})");
    folder.write("set/buttons.json", R"({"buttons": []})");
    folder.write("set/hid_event_map.json", R"({"event_types": {"BUTTON": 1}, "control_ids": {"HDG": 21, "LOST": -1}})");
    const std::string path = folder.write("scenarios/a.scenario", "folder ../set\nconfig logging.debug = 1\n"
                                                                  "board PFD1\n> PFD1 press HDG\n");
    Scenario scenario;
    std::string error;
    ASSERT_TRUE(loadScenario(path, scenario, error)) << error;
    const JsonValue settings = scenarioSettings(scenario);
    EXPECT_EQ(jsonText(*find(settings, "logging")), R"({"debug": 1})");
    EXPECT_EQ(find(*find(settings, "hid"), "vid")->string, "AAAA");
    EXPECT_EQ(scenario.files.at("buttons.json"), R"({"buttons": []})");
    EXPECT_TRUE(scenario.files.contains("hid_event_map.json"));
    ASSERT_EQ(scenario.controls.size(), 1U);
    EXPECT_EQ(scenario.controls[0].name, "HDG");
}

TEST(ScenarioFile, FolderWithoutItsFilesIsRefused) {
    const std::string path = FileSystem::join("no/such", "config.json");
    EXPECT_EQ(errorOf("folder no/such\n"), "a.scenario:1:8: " + path + " can't be read");
}

TEST(ScenarioFile, FolderWithABrokenEventMapIsRefused) {
    TempFolder folder;
    folder.write("config.json", "{}");
    folder.write("buttons.json", "{}");
    folder.write("hid_event_map.json", "{}");
    EXPECT_EQ(errorOf("folder " + folder.path() + "\n"), "a.scenario:1:8: Event map missing valid event_types entries");
}

TEST(ScenarioFile, FileBlocksAreVerbatim) {
    const Scenario scenario =
        parsed("file buttons.json <<STOP\n  # no comment\n> no step\nSTOP\nwithout config.json\n");
    EXPECT_EQ(scenario.files.at("buttons.json"), "  # no comment\n> no step\n");
    EXPECT_TRUE(scenario.missingFiles.contains("config.json"));
    EXPECT_TRUE(scenario.steps.empty());
}

TEST(ScenarioFile, SwitchesAreReadAndOffAtFirst) {
    const Scenario plain = parsed("");
    EXPECT_FALSE(plain.consoleMode);
    EXPECT_TRUE(plain.hotPlugNotifications);
    EXPECT_TRUE(plain.moduleInstalled);
    EXPECT_FALSE(plain.watch.dummies);
    const Scenario other = parsed("console\nhotplug off\nmodule missing\nwatch dummies\nwatch log debug HID event\n");
    EXPECT_TRUE(other.consoleMode);
    EXPECT_FALSE(other.hotPlugNotifications);
    EXPECT_FALSE(other.moduleInstalled);
    EXPECT_TRUE(other.watch.dummies);
    EXPECT_EQ(other.watch.debugTexts, Texts{"HID event"});
}

TEST(ScenarioFile, ExpectationsInARowAreOneBlock) {
    const Scenario scenario = parsed("board PFD1\n< sim rpn A\n# between\n\n< PFD1 bootsel\n> start\n< exit 0\n");
    ASSERT_EQ(scenario.steps.size(), 3U);
    EXPECT_EQ(blockAt(scenario, 0).expected.size(), 2U);
    EXPECT_EQ(blockAt(scenario, 2).expected.size(), 1U);
}

TEST(ScenarioFile, NothingIsABlockOfItsOwn) {
    const Scenario scenario = parsed("< sim rpn A\n< nothing\n< sim rpn B\n");
    ASSERT_EQ(scenario.steps.size(), 3U);
    EXPECT_TRUE(blockAt(scenario, 1).expected.empty());
    EXPECT_EQ(blockAt(scenario, 1).line, 2U);
}

TEST(ScenarioFile, ExpectationsAreWordedAsTheyCome) {
    EXPECT_EQ(expectedTexts("< PFD1 led steady 80\n< PFD1 led   none\n< PFD1 led flash level=100 count=4 period=150\n"
                            "< PFD1 led breathe\n< PFD1 status connected\n< PFD1 bootsel\n"),
              (Texts{"PFD1: led steady 80", "PFD1: led none", "PFD1: led flash count=4 period=150 level=100",
                     "PFD1: led breathe count=0 period=0 level=0", "PFD1: status connected", "PFD1: bootsel"}));
    EXPECT_EQ(expectedTexts("< sim rpn 1  (>K:A)\n< sim closed\n< sim dummy\n< log INFO a * b\n< exit 1\n"),
              (Texts{"sim: rpn 1  (>K:A)", "sim: closed", "sim: dummy", "log: INFO a * b", "exit: 1"}));
}

TEST(ScenarioFile, CountsAreReadFromTheEnd) {
    EXPECT_EQ(expectation("< sim rpn A").least, 1U);
    EXPECT_EQ(expectation("< sim rpn A").most, 1U);
    EXPECT_EQ(expectation("< sim rpn A x3").least, 3U);
    EXPECT_EQ(expectation("< sim rpn A x3").text, "rpn A");
    EXPECT_EQ(expectation("< sim rpn A x2+").least, 2U);
    EXPECT_EQ(expectation("< sim rpn A x2+").most, std::numeric_limits<std::size_t>::max());
    EXPECT_EQ(expectation("< PFD1 led steady 5 x0..1").most, 1U);
    EXPECT_EQ(expectation("< PFD1 led steady 5 x0..1").text, "led steady 5");
}

TEST(ScenarioFile, WordsThatOnlyLookLikeCountsBelongToTheText) {
    EXPECT_EQ(expectation("< sim rpn A x").text, "rpn A x");
    EXPECT_EQ(expectation("< sim rpn A x3x").text, "rpn A x3x");
    EXPECT_EQ(expectation("< sim rpn A x3..1").text, "rpn A x3..1");
    EXPECT_EQ(expectation("< sim rpn A x+").text, "rpn A x+");
}

TEST(ScenarioFile, EveryStepIsRead) {
    const std::string lines = "> plug PFD1\n> unplug PFD1\n> start\n> stop\n> connect\n> session\n> console quit\n"
                              "> PFD1 press HDG mode=1 times=2 every=5 value=1\n> PFD1 hold 5\n> PFD1 release 65535\n"
                              "> PFD1 turn HDG -128 speed=255\n> PFD1 event 255 0\n> PFD1 notice\n> PFD1 raw 01 02ff\n"
                              "> PFD1 fault reads no-report-id\n> sim start\n> sim battery off\n"
                              "> sim avar LIGHT POTENTIOMETER:3 0.4\n> wait 60ms\n> pause 2s\n> replug PFD1\n"
                              "> say Good bye.\n";
    const Scenario scenario = parsed("board PFD1\ncontrol 21 = HDG\nconsole\n" + lines);
    EXPECT_EQ(scenario.steps.size(), 22U);
    EXPECT_EQ(std::get<ScenarioInput>(scenario.steps.back()).remark, "Good bye.");
    EXPECT_EQ(std::get<ScenarioInput>(scenario.steps.front()).line, 4U);
}

TEST(ScenarioFileErrors, SayWhereAndWhatWasMeant) {
    EXPECT_EQ(errorOf("board PFD1\n\n> PFD1 pres 5\n"),
              "a.scenario:3:8: unknown thing that a board does \"pres\"; did you mean \"press\"?");
    EXPECT_EQ(errorOf("  bord PFD1\n"), "a.scenario:1:3: unknown declaration \"bord\"; did you mean \"board\"?");
    EXPECT_EQ(errorOf("< log WARNING x\n"),
              "a.scenario:1:7: unknown log level \"WARNING\"; known: WARN, ERROR, INFO, DEBUG");
}

TEST(ScenarioFileErrors, UnknownBoardsAndControls) {
    EXPECT_EQ(errorOf("> plug PFD1\n"), "a.scenario:1:8: no board is declared: write \"board PFD1\" above");
    EXPECT_EQ(errorOf("board PFD1\n> plug PFD2\n"), "a.scenario:2:8: unknown board \"PFD2\"; did you mean \"PFD1\"?");
    EXPECT_EQ(errorOf("board PFD1\ncontrol 21 = HDG\n> PFD1 press HGD\n"),
              "a.scenario:3:14: unknown control \"HGD\"; known: HDG");
    EXPECT_EQ(errorOf("board PFD1\n< PDF1 bootsel\n"),
              "a.scenario:2:3: unknown stream \"PDF1\"; known: sim, log, exit, nothing, PFD1");
}

TEST(ScenarioFileErrors, MissingWords) {
    EXPECT_EQ(errorOf(">\n"), "a.scenario:1:2: expected a step");
    EXPECT_EQ(errorOf("<\n"), "a.scenario:1:2: expected what comes: sim, log, exit, nothing or a board");
    EXPECT_EQ(errorOf("< sim rpn\n"), "a.scenario:1:10: expected its text");
    EXPECT_EQ(errorOf("control 21\n"), "a.scenario:1:11: expected \"=\"");
    EXPECT_EQ(errorOf("control 21=HDG\n"), "a.scenario:1:9: \"21=HDG\" is no control number: a whole number from 0 to "
                                           "65535 was meant to stand here");
    EXPECT_EQ(errorOf("control 21 HDG\n"), "a.scenario:1:12: expected \"=\" with blanks around it, and not \"HDG\"");
}

TEST(ScenarioFileErrors, WordsTooMany) {
    EXPECT_EQ(errorOf("> start now\n"), "a.scenario:1:9: didn't expect \"now\" here: the line is complete before it");
    EXPECT_EQ(errorOf("< nothing else\n"),
              "a.scenario:1:11: didn't expect \"else\" here: the line is complete before it");
}

TEST(ScenarioFileErrors, NumbersOutOfTheirRanges) {
    EXPECT_TRUE(errorOf("control 65536 = X\n").starts_with("a.scenario:1:9: \"65536\" is no control "));
    EXPECT_TRUE(errorOf("board P\n> P turn 5 +128\n").starts_with("a.scenario:2:12: \"+128\" is no count of detents"));
    EXPECT_EQ(errorOf("board P\n> P press 5 mode=256\n"),
              "a.scenario:2:13: \"256\" is no value for mode: a whole number from 0 to 255 was meant to stand here");
    EXPECT_EQ(errorOf("board P\n> P press 5 node=1\n"),
              "a.scenario:2:13: unknown option \"node\"; did you mean \"mode\"?");
    EXPECT_EQ(errorOf("board P\n> P press 5 fast\n"),
              "a.scenario:2:13: expected an option, written as name=value, and not \"fast\"");
}

TEST(ScenarioFileErrors, TimesBytesAndSwitches) {
    EXPECT_EQ(errorOf("> wait 60\n"), "a.scenario:1:8: \"60\" is no time: write it as 60ms, 2s or 1.5s");
    EXPECT_EQ(errorOf("> wait soon\n"), "a.scenario:1:8: \"soon\" is no time: write it as 60ms, 2s or 1.5s");
    EXPECT_EQ(errorOf("board P\n> P raw 0\n"),
              "a.scenario:2:9: \"0\" is no row of bytes: pairs of hexadecimal digits were meant to stand here");
    EXPECT_EQ(errorOf("hotplug of\n"), "a.scenario:1:9: unknown on or off \"of\"; did you mean \"off\"?");
}

TEST(ScenarioFileErrors, ControlsOfTheSimulator) {
    EXPECT_EQ(errorOf("> sim\n"), "a.scenario:1:6: expected a control of the simulator");
    EXPECT_EQ(errorOf("> sim batery on\n"),
              "a.scenario:1:7: unknown control of the simulator \"batery\"; did you mean \"battery\"?");
    EXPECT_EQ(errorOf("> sim battery of\n"), "a.scenario:1:15: expected \"sim battery on|off\"");
    EXPECT_EQ(errorOf("> sim battery\n"), "a.scenario:1:7: expected \"sim battery on|off\"");
    EXPECT_EQ(errorOf("> sim quit now\n"), "a.scenario:1:12: expected \"sim quit\"");
    EXPECT_EQ(errorOf("> battery off\n"),
              "a.scenario:1:3: \"battery\" is a control of the simulator: write \"sim battery\"");
}

TEST(ScenarioFileErrors, BoardOptions) {
    EXPECT_EQ(errorOf("board P id=12\n"),
              "a.scenario:1:9: \"12\" is no id: sixteen hexadecimal digits, or none, were meant to stand here");
    EXPECT_EQ(errorOf("board P vid=12345\n"),
              "a.scenario:1:9: \"12345\" is no vid: four hexadecimal digits were meant to stand here");
    EXPECT_EQ(errorOf("board P protocol=1\n"), "a.scenario:1:9: \"1\" is no protocol version: write it as 1.2");
    EXPECT_EQ(errorOf("board P seral=1\n"),
              "a.scenario:1:9: unknown option of a board \"seral\"; did you mean \"serial\"?");
    EXPECT_EQ(errorOf("board sim\n"),
              "a.scenario:1:7: \"sim\" has a meaning of its own in a scenario: name the board otherwise");
}

TEST(ScenarioFileErrors, NamesTwice) {
    EXPECT_EQ(errorOf("board P\nboard P\n"), "a.scenario:2:7: a board of the name \"P\" stands above");
    EXPECT_EQ(errorOf("control 5 = A\ncontrol 5 = B\n"), "a.scenario:2:9: control 5 has a name above");
}

TEST(ScenarioFileErrors, DeclarationBehindAStep) {
    EXPECT_EQ(errorOf("> start\nboard P\n"),
              "a.scenario:2:1: declarations stand before the first step; a step begins with > or <");
}

TEST(ScenarioFileErrors, WhatIsNeverShown) {
    EXPECT_EQ(errorOf("< sim dummy\n"),
              "a.scenario:1:7: dummies aren't shown here: write \"watch dummies\" above the first step");
    EXPECT_EQ(errorOf("< log INFO x\n"),
              "a.scenario:1:7: INFO lines aren't shown here: write \"watch log info\" above the first step");
    EXPECT_EQ(errorOf("> console quit\n"),
              "a.scenario:1:11: the bridge has no console here: write \"console\" above the first step");
}

TEST(ScenarioFileErrors, Blocks) {
    EXPECT_EQ(errorOf("file config.json <<END\n{}\n"), "a.scenario:1:18: no line END ends this block");
    EXPECT_EQ(errorOf("file config.json {}\n"),
              "a.scenario:1:18: expected <<END, which begins a block that a line END ends");
    EXPECT_TRUE(errorOf("config a = yes\n").starts_with("a.scenario:1:12: this is no JSON value ("));
}

TEST(ScenarioFile, UnreadableFileIsNamed) {
    Scenario scenario;
    std::string error;
    EXPECT_FALSE(loadScenario("no/such.scenario", scenario, error));
    EXPECT_EQ(error, "no/such.scenario: can't be read");
}

TEST(ScenarioFile, FileIsReadFromDisk) {
    const TempFolder folder;
    Scenario scenario;
    std::string error;
    EXPECT_TRUE(loadScenario(folder.write("x.scenario", "# X\nboard PFD1\n"), scenario, error)) << error;
    EXPECT_EQ(scenario.title, "X");
}

TEST(ScenarioConfiguration, DefaultsAreThere) {
    EXPECT_EQ(jsonText(scenarioSettings(parsed(""))),
              R"({"hid": {"pid": "ABCD", "scanIntervalMs": 250, "vid": "1234"}, "logging": {"debug": 1}, )"
              R"("mappings": {"buttonConfigPath": "buttons.json"}, "outputs": {"debounceMs": 0}})");
}

TEST(ScenarioConfiguration, NullRemovesASetting) {
    const JsonValue settings = scenarioSettings(parsed("config logging = null\nconfig hid.pid = null\n"));
    EXPECT_EQ(find(settings, "logging"), nullptr);
    EXPECT_EQ(jsonText(*find(settings, "hid")), R"({"scanIntervalMs": 250, "vid": "1234"})");
}

TEST(ScenarioConfiguration, FilesAreMadeOfTheShorthand) {
    const Scenario scenario = parsed("control 21 = HDG\ncommand HDG CW = +\ncommand HDG CW PFD = \"x\"\nlist AP\n");
    const auto files = rigSettings(scenario, Pace::fast()).files;
    EXPECT_EQ(files.at("config.json"), jsonText(scenarioSettings(scenario)));
    EXPECT_EQ(files.at("buttons.json"), R"({"buttons": [{"commands": {}, "name": "AP"}, )"
                                        R"({"commands": {"CW": {"DEFAULT": "+", "PFD": "\"x\""}}, "name": "HDG"}]})");
    EXPECT_EQ(files.at("hid_event_map.json"),
              R"({"control_ids": {"HDG": 21}, "event_types": {"BOARD_NOTICE": 4, "BUTTON": 1, "ENCODER": 2}})");
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
