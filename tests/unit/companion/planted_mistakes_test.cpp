// Each row is a mistake of a user: what `check` says about it, and where.

#include "tests/unit/companion/planted_configuration.h"

#include <gtest/gtest.h>

namespace {

struct Planted {
    PlantedConfiguration files;
    std::vector<std::string> findings;
};

void expectFindings(const std::vector<Planted>& rows) {
    for (const Planted& row : rows) {
        EXPECT_EQ(WrittenConfiguration(row.files).findings(), expectedFindings(row.files, row.findings))
            << row.files.config << '\n'
            << row.files.map << '\n'
            << row.files.buttons;
    }
}

const std::string wholeNumber = "Write a whole number";
const std::string text = "Write a text in double quotes";
const std::string object = "Write an object: {...}";
const std::string list = "Write a list: [...]";
const std::string onOff = "Write 1 for on or 0 for off, without quotes";
const std::string integer = "Write a whole number without quotes";
const std::string removeOne = "Remove one of the two";

} // namespace

TEST(PlantedMistakes, NoneInAGoodConfiguration) {
    expectFindings({{PlantedConfiguration(), {}},
                    {withMembers(R"("$schema": "x", "logging": {"debug": 1}, "devices": [])"), {}},
                    {withMembers(R"("devices": [{"index": 0, "role": "AUDIO"}], "mobiflight": {"enabled": 0})"), {}}});
}

TEST(PlantedMistakes, TextsThatAreNotJson) {
    const auto row = [](const std::string& config, const std::string& hint) {
        return Planted{withConfig(config), {"error not-json: " + hint}};
    };
    expectFindings({
        row("{\"hid\": {} @\"mappings\": {}}",
            "A comma is missing between two members, or a number has a form that JSON doesn't allow, such as 0x10"),
        row("{\n  @// boards\n}",
            "A name in double quotes is expected: an extra comma before }, a comment, single quotes"),
        row("{\"hid\": {\"vid\": \"1\",@}}",
            "A name in double quotes is expected: an extra comma before }, a comment, single quotes"),
        row("{\"hid\" @{}}", "A colon is missing"),
        row("{\"hid\": {}@", "A } is missing"),
        row("{\"devices\": [1 @2]}", "A comma is missing between two elements"),
        row("{\"devices\": [1,@]}",
            "Something that isn't a value: a comment, a single quote, an extra comma in a list"),
        row("{\"hid\": {\"vid\": \"1@", "A double quote is missing"),
        row("{\"path\": \"C:\\P@rograms\"}", "A single backslash, often in a Windows path: write \\\\ or /"),
        row("{\"hid\": @tru}", "A misspelt true or false"),
        row("{} @x", "Something follows the last bracket"),
        row("@", "The file is empty, or ends where a value is expected"),
    });
}

TEST(PlantedMistakes, WhatTheBridgeRefusesInTheConfiguration) {
    const auto refused = [](const std::string& hint) { return std::vector<std::string>{"error refused: " + hint}; };
    expectFindings({
        {withConfig(R"(@{"mappings": {"buttonConfigPath": "buttons.json"}})"), refused("Add it")},
        {withConfig(R"({"hid": @{"pid": "1"}, "mappings": {"buttonConfigPath": "buttons.json"}})"),
         refused("\"vid\": \"1234\"")},
        {withConfig(R"({"hid": {"vid": @1234, "pid": "1"}, "mappings": {"buttonConfigPath": "buttons.json"}})"),
         refused(text)},
        {withConfig(R"({"hid": {"vid": "1", "pid": @""}, "mappings": {"buttonConfigPath": "buttons.json"}})"),
         refused("pid is empty")},
        {withConfig(R"({"hid": {"vid": @"xyz", "pid": "1"}, "mappings": {"buttonConfigPath": "buttons.json"}})"),
         refused("Write up to four hexadecimal digits, such as \"16C0\"")},
        {withConfig(R"({"hid": {"vid": "1", "pid": "1"}, "mappings": @{}})"), refused("Name the command file")},
        {withMembers(R"("mobiflight": {"rpnRateLimitMs": @-5})"), refused("Negative, or too large for 32 bits")},
        {withMembers(R"("mobiflight": {"mapHoldRepeatMs": @0})"),
         refused("0, negative or below 1; checked even while the client is off")},
        {withMembers(R"("mobiflight": {"commandChannel": @""})"), refused("Leave the key out")},
        {withMembers(R"("cdc": @{@"enabled": 1})"),
         {"error refused: Set cdc.enabled to 0", "warning no-effect: Write 0"}},
        {withMembers(R"("outputs": {"debounceMs": @-1})"), refused("")},
        {withProfile(R"("backlight": {"max": @101})"), refused("Out of range, or min is above max")},
        {withProfile(R"("backlight": {"scale": @0})"), refused("")},
        {withProfile(R"("batteryOff": {"effect": @"blink"})"), refused("Not one of off, steady, breathe, flash")},
        {withMembers(R"("extensions": {"batteryIndex": @17})"), refused("Most aircraft with one battery need 1")},
        {withMembers(R"("devices": @{})"), refused(list)},
        {withMembers(R"("devices": [{"index": 0}, @"PFD"])"), refused("Elements are counted from 0")},
        {withMembers(R"("devices": [@{"role": "PFD"}])"), refused("The element identifies no board")},
    });
}

TEST(PlantedMistakes, KeysThatTheBridgeDoesNotKnow) {
    const auto row = [](const std::string& members, const std::string& hint) {
        return Planted{withMembers(members), {"warning unknown-key: " + hint}};
    };
    expectFindings({
        row(R"(@"loging": {})", "Did you mean \"logging\"?"),
        row(R"(@"Logging": {"debug": 1})", "Did you mean \"logging\"?"),
        row(R"("logging": {@"debgu": 1})", "Did you mean \"debug\"?"),
        row(R"("logging": {@"verbose": 1})", "Known here: debug"),
        row(R"("mobiflight": {@"rpnRateLimit": 5})", "Did you mean \"rpnRateLimitMs\"?"),
        row(R"("extensions": {@"ownChanels": 1})", "Did you mean \"ownChannels\"?"),
        row(R"("cdc": {@"comport": "COM3"})", "Did you mean \"comPort\"?"),
        row(R"("outputs": {@"debounce": 5})", "Did you mean \"debounceMs\"?"),
        row(R"("devices": [{"index": 0, @"rolle": "PFD"}])", "Did you mean \"role\"?"),
        {withProfile(R"(@"backlite": {})"), {"warning unknown-key: Did you mean \"backlight\"?"}},
        {withProfile(R"("backlight": {@"maximum": 3})"),
         {"warning unknown-key: Known here: mode, min, max, default, value, scale"}},
        {withProfile(R"("batteryOff": {@"periodMS": 3})"), {"warning unknown-key: Did you mean \"periodMs\"?"}},
    });
}

TEST(PlantedMistakes, ValuesOfAnotherType) {
    const auto row = [](const std::string& members, const std::string& hint) {
        return Planted{withMembers(members), {"warning wrong-type: " + hint}};
    };
    expectFindings({
        row(R"("logging": @1)", object),
        row(R"("extensions": @[])", object),
        row(R"("logging": {"debug": @"1"})", onOff),
        row(R"("mobiflight": {"clientName": @5})", text),
        row(R"("mobiflight": {"rpnRateLimitMs": @"20"})", integer),
        row(R"("mobiflight": {"mapHoldRepeatMs": @null})", integer),
        row(R"("outputs": {"profiles": @[]})", object),
        row(R"("outputs": {"profiles": {"default": @"bright"}})", object),
        row(R"("outputs": {"roleProfiles": {"PFD": @1}})", text),
        row(R"("devices": [{"index": 0, "role": @1}])", text),
        {withProfile(R"("backlight": {"scale": @"2"})"), {"warning wrong-type: Write a number without quotes"}},
        {withProfile(R"("backlight": {"min": @true})"), {"warning wrong-type: " + integer}},
    });
}

TEST(PlantedMistakes, SwitchesWrittenAsTrueOrFalse) {
    expectFindings({
        {withMembers(R"("mobiflight": {"enabled": @false})"), {"warning boolean-switch: " + onOff}},
        {withMembers(R"("logging": {"debug": @true})"), {"warning boolean-switch: " + onOff}},
        {withMembers(R"("extensions": {"singlePendingRead": @true, "lvarNumbers": @true})"),
         {"warning boolean-switch: " + onOff, "warning boolean-switch: " + onOff}},
    });
}

TEST(PlantedMistakes, NumbersThatTheBridgeReadsAsOthers) {
    expectFindings({
        {withMembers(R"("outputs": {"debounceMs": @2.5})"), {"warning fraction-dropped: " + wholeNumber}},
        {withMembers(R"("extensions": {"ownChannels": @0.5})"), {"warning fraction-dropped: " + wholeNumber}},
        {withMembers(R"("devices": [{"boardId": "A1", "index": @3e10}])"),
         {"error refused: Write a number within 32 bits"}},
        {withProfile(R"("simDisconnected": {"level": @300})"), {"warning number-limited: Write 0 to 255"}},
        {withProfile(R"("simDisconnected": {"periodMs": @70000})"), {"warning number-limited: Write 0 to 65535"}},
        {withProfile(R"("batteryOff": {"param0": @-1})"), {"warning number-limited: Write 0 to 255"}},
    });
}

TEST(PlantedMistakes, SettingsAndModesWithoutEffect) {
    const std::string leaveOut = "Leave it out; reports are read as they come";
    expectFindings({
        {withConfig(R"({"hid": {"vid": "1", "pid": "1", @"readIntervalMs": 2},
                        "mappings": {"buttonConfigPath": "buttons.json"}})"),
         {"hint no-effect: " + leaveOut}},
        {withMembers(R"("cdc": {@"enabled": 1, "comPort": "COM3"})"), {"warning no-effect: Write 0"}},
        {withProfile(R"("backlight": {"mode": @"fix"})"), {"warning unknown-mode: Known here: fixed, off, lvar"}},
        {withProfile(R"("batteryOff": {"count": 5, "periodMs": 1, "level": 9, @"param0": 4})"),
         {"warning no-effect: " + removeOne}},
    });
}

TEST(PlantedMistakes, ThingsThatAreThereTwice) {
    expectFindings({
        {withMembers(R"("logging": {}, @"logging": {"debug": 1})"), {"warning repeated-key: " + removeOne}},
        {withMembers(R"("logging": {"debug": 0, @"debug": 1})"), {"warning repeated-key: " + removeOne}},
        {withMembers(R"("outputs": {"profiles": {"default": {}, @"De fault": {}}})"),
         {"warning same-name: Rename one of the two"}},
        {withMembers(R"("outputs": {"roleProfiles": {"PFD": "default", @"pfd": "default"}},
                        "devices": [{"index": 0, "role": "PFD"}])"),
         {"warning same-name: Rename one of the two"}},
        {withMembers(R"("devices": [{"index": 0}, {"index": @0, "role": "MFD"}])"),
         {"warning repeated-board: " + removeOne}},
        {withMembers(R"("devices": [{"boardId": "0xA1"}, {"boardId": @"a1"}])"),
         {"warning repeated-board: " + removeOne}},
        {withControls(R"(@"a p": 5)"),
         {"warning same-name: Rename one of the two, unless they are meant to do the same"}},
        {withCommands(R"~({"PRESS": {"PFD": "", @"pfd": "(>K:AP_MASTER)"}})~"), {"warning same-name: " + removeOne}},
    });
}

TEST(PlantedMistakes, TwoControlsWithOneNumber) {
    PlantedConfiguration planted;
    planted.map = R"({"event_types": {"BUTTON": 1}, "control_ids": {"AP": 22, "HDG": @22}})";
    planted.buttons = R"({"buttons": [{"name": @"AP", "commands": {}}, {"name": "HDG", "commands": {}}]})";
    expectFindings({{planted,
                     {"warning number-twice: Give each control its own number",
                      "warning control-without-number: Known here: HDG"}}});
}

TEST(PlantedMistakes, MisspeltCommandsLeaveAControlWithoutAny) {
    PlantedConfiguration planted;
    planted.map = R"({"event_types": {"BUTTON": 1}, "control_ids": {@"AP": 22}})";
    planted.buttons = R"({"buttons": [{"name": @"AP", @"comands": {}}]})";
    expectFindings({{planted,
                     {"hint control-without-command: Add it to the command file",
                      "hint control-without-command: Add \"commands\", or remove the entry",
                      "warning unknown-key: Did you mean \"commands\"?"}}});
}

TEST(PlantedMistakes, ProfilesThatDoNotExist) {
    expectFindings({
        {withMembers(R"("outputs": {"profiles": {"bright": {}}, "defaultProfile": "bright",
                         "roleProfiles": {"PFD": @"brihgt"}}, "devices": [{"index": 0, "role": "PFD"}])"),
         {"warning unknown-profile: Did you mean \"BRIGHT\"?"}},
        {withMembers(R"("outputs": {"profiles": {"bright": {}}, "defaultProfile": "bright"},
                        "devices": [{"index": 0, "ledProfile": @"dim"}])"),
         {"warning unknown-profile: Known here: BRIGHT"}},
        {withMembers(R"("outputs": {"defaultProfile": @"dim"})"),
         {"hint unknown-profile: Add it to outputs.profiles, or name one that is there"}},
    });
}

TEST(PlantedMistakes, RolesThatNoBoardHas) {
    expectFindings({
        {withMembers(R"("outputs": {"roleProfiles": {@"PDF": "default"}}, "devices": [{"index": 0, "role": "pfd"}])"),
         {"hint unused-role: Did you mean \"PFD\"?"}},
        {withMembers(R"("outputs": {"roleProfiles": {"PFD": "default", @" ": "default"}}, "devices": [{"index": 0}])"),
         {"warning empty-name: Name it"}},
    });
}

TEST(PlantedMistakes, FilesThatAreNotThere) {
    const std::string place = "Correct the path, put the file there, or check its permissions";
    PlantedConfiguration noButtons =
        withConfig(R"({"hid": {"vid": "1", "pid": "1"}, "mappings": {"buttonConfigPath": @"button.json"}})");
    PlantedConfiguration noMap = withConfig(
        R"({"hid": {"vid": "1", "pid": "1"},
            "mappings": {"buttonConfigPath": "buttons.json", "hidEventMapPath": @"map.json"}})");
    expectFindings({{noButtons, {"error missing-file: " + place}}, {noMap, {"warning missing-file: " + place}}});
}

TEST(PlantedMistakes, ControlsThatLackANameANumberOrACommandAreNamed) {
    PlantedConfiguration swapped;
    swapped.map = R"({"event_types": {"BUTTON": 1}, "control_ids": @{"22": "AP"}})";
    const std::string addCommand = "Add it to the command file";
    expectFindings({
        {withControls(R"(@"FPL": 43)"), {"hint control-without-command: " + addCommand}},
        {withControls(R"("FPL": @"43")"), {"warning wrong-type: " + integer}},
        {withControls(R"(@"FPL": @65536)"),
         {"hint control-without-command: " + addCommand, "warning number-out-of-range: Write 0 to 65535"}},
        {withButtons(R"({"buttons": [{"name": "AP", "commands": {}}], "knobs": [{"name": "HDG", "commands": {}},
                         {"name": @"HGD", "commands": {}}]})"),
         {"warning control-without-number: Did you mean \"HDG\"?"}},
        {withButtons(R"({"buttons": [{"name": "AP", "commands": {}}, {"name": "HDG", "commands": {}},
                         {"name": @" ", "commands": {}}]})"),
         {"warning empty-name: Write a name of the event map"}},
    });
}

TEST(PlantedMistakes, CommandFileOfAnotherFormIsRefusedAtThePlace) {
    const auto refused = [](const std::string& hint) { return std::vector<std::string>{"error refused: " + hint}; };
    const std::string controls = R"([{"name": "AP", "commands": {}}, {"name": "HDG", "commands": {}}])";
    expectFindings({
        {withButtons(R"({"buttons": @{}, "knobs": )" + controls + "}"), refused(list)},
        {withButtons(R"({"buttons": [@"AP"], "knobs": )" + controls + "}"),
         refused("An element isn't in braces. Elements are counted from 0; knobs[N] means the other list")},
        {withButtons(R"({"buttons": [@{"commands": {}}], "knobs": )" + controls + "}"),
         refused("The element has no name, or it isn't text")},
        {withButtons(R"({"buttons": [{"name": @22}], "knobs": )" + controls + "}"), refused(text)},
        {withButtons(R"({@"button": [], "knobs": )" + controls + "}"),
         {"warning unknown-key: Did you mean \"buttons\"?"}},
    });
}

TEST(PlantedMistakes, UnknownActionsAndRolesAreNamedWithTheKnownOnes) {
    const std::string actions = "Known here: PRESS, HOLD, RELEASE, CW, CCW, CW_FAST, CCW_FAST";
    expectFindings({
        {withCommands(R"({@"PUSH": {"DEFAULT": ""}})"), {"warning unknown-action: " + actions}},
        {withCommands(R"({@"PRES": {"DEFAULT": ""}})"), {"warning unknown-action: Did you mean \"PRESS\"?"}},
        {withCommands(R"({@"CWFAST": {"DEFAULT": ""}})"), {"warning unknown-action: Did you mean \"CW_FAST\"?"}},
        {withCommands(R"~({"PRESS": @"(>K:AP_MASTER)"})~"), {"warning wrong-type: " + object}},
        {withCommands(R"({"PRESS": {"DEFAULT": @5}})"), {"warning wrong-type: " + text}},
        {withCommands(R"({"PRESS": {@"DEFALT": ""}})"), {"warning unknown-role: Did you mean \"DEFAULT\"?"}},
        {withCommands(R"({"PRESS": {@"COPILOT": ""}})"), {"warning unknown-role: Known here: DEFAULT, MFD, PFD"}},
    });
}

TEST(PlantedMistakes, BadCommandsAreNamedWithTheirCorrection) {
    const auto row = [](const std::string& command, const std::string& finding) {
        return Planted{withCommand(command), {finding}};
    };
    expectFindings({
        row("@(>K:AP_MASTER", "warning unbalanced-bracket: Add a )"),
        row("(>K:AP_MASTER)@)", "warning unbalanced-bracket: Remove it"),
        row("@( >K:AP_MASTER)", "warning blank-in-brackets: Remove the space"),
        row("(@K:AP_MASTER)", "warning event-without-arrow: Write (>K:AP_MASTER)"),
        row("@K:AP_MASTER", "warning event-without-brackets: An event is written (>K:NAME)"),
        row("@>K:AP_MASTER", "warning event-without-brackets: An event is written (>K:NAME)"),
        row("(>@K:AP_MASTR)", "hint unknown-event: Did you mean K:AP_MASTER?"),
        row("(>@K:2:KOHLSMANN_SET)", "hint unknown-event: Did you mean K:KOHLSMAN_SET?"),
        row("(>@H:AS1000_PFD_SOFTKEY_1)", "hint unknown-event: Did you mean H:AS1000_PFD_SOFTKEYS_1?"),
        row("1 if@{ (>K:AP_MASTER)", "warning unbalanced-brace: Add a }"),
        row("(>K:AP_MASTER) @}", "warning unbalanced-brace: Remove it"),
        row("1 2 @pluss", "warning unknown-word: Correct or remove it"),
        row("4 @sqtr", "warning unknown-word: Did you mean sqr?"),
        row("@'text", "warning unbalanced-quote: Add a '"),
        row(R"((A:HEADING INDICATOR, degrees) @\"x\")", "warning unknown-word: Correct or remove it"),
    });
    expectFindings({
        {withCommand("1 @if @{ (>K:AP_MASTER) }"),
         {"warning unknown-word: Write if{ without a space", "warning brace-alone: Write if{ or els{ without a space"}},
        {withCommand("(>K:AP_MASTER)@" + std::string("\\u0000") + "1"), {"warning zero-byte: Remove it"}},
        {withCommand(std::string(238, '1') + "@2"), {"warning command-too-long: Shorten it to 238"}},
    });
}

TEST(PlantedMistakes, GoodCommandsGiveNothing) {
    for (const char* command :
         {"1 (>K:HEADING_BUG_INC)", "(A:AUTOPILOT HEADING LOCK DIR, degrees) 10 + dnor near (>K:HEADING_BUG_SET)",
          "(L:XMLVAR_A) 0 == if{ 1 (>L:XMLVAR_A) } els{ 0 (>L:XMLVAR_A) }", "2 16272 (>K:2:KOHLSMAN_SET)",
          "(>H:AS1000_PFD_CLR)", "(>H:MYPLANE_BUTTON_7)", "(>B:LIGHTING_Panel_Toggle)",
          "'text' 3.5 -1 0x1F s0 l0 sp1 *", "(E:LOCAL TIME, seconds) 60 > (A:X, bool) and", ""}) {
        EXPECT_EQ(WrittenConfiguration(withCommand(command)).findings(), std::vector<std::string>()) << command;
    }
}

TEST(ConfigurationVerdict, NamesTheBridgesReason) {
    const ConfigurationVerdict good = WrittenConfiguration(PlantedConfiguration()).verdict();
    EXPECT_TRUE(good.bridgeStarts);
    EXPECT_EQ(good.refusal, "");
    EXPECT_EQ(good.files.size(), 3U);
    const ConfigurationVerdict bad = WrittenConfiguration(withButtons("{")).verdict();
    EXPECT_FALSE(bad.bridgeStarts);
    EXPECT_EQ(bad.refusal, "Button config parse error: Unterminated object");
    PlantedConfiguration brokenMap;
    brokenMap.map = "{";
    EXPECT_TRUE(WrittenConfiguration(brokenMap).verdict().bridgeStarts) << "the bridge only warns";
}

TEST(ConfigurationVerdict, ListsAllErrorsOfAFileAtOnce) {
    const PlantedConfiguration planted = withMembers(
        R"("mobiflight": {"rpnRateLimitMs": @-1, "mapHoldRepeatMs": @0}, "outputs": {"debounceMs": @-1},
           "devices": [@5, @{}, {"boardId": "A", "index": @-7}])");
    std::vector<std::string> places;
    addMarks("config.json", planted.config, places);
    std::vector<std::string> found;
    for (const std::string& finding : WrittenConfiguration(planted).findings()) {
        found.push_back(finding.substr(0, finding.find(' ')));
    }
    EXPECT_EQ(found, places);
}

TEST(PlantedMistakes, LinesMayEndInAnyWay) {
    expectFindings({
        {withConfig("{\"hid\": {\"vid\": \"1\", \"pid\": \"1\"},\r\n \"mappings\": {\"buttonConfigPath\": "
                    "\"buttons.json\"},\r\n @\"x\": 1}"),
         {"warning unknown-key: Known here: $schema, hid, mappings, mobiflight, cdc, logging, extensions, outputs, "
          "devices"}},
        {withMembers("\"logging\": {\r@\"verbose\": 1}"), {"warning unknown-key: Known here: debug"}},
    });
}

TEST(PlantedMistakes, AreLookedForBehindAnError) {
    PlantedConfiguration planted = withMembers(R"("devices": [@{"role": "PFD"}, {"index": 1, "role": "AUDIO"}])");
    planted.buttons = R"~({"buttons": [{"name": "AP", "commands": {"PRESS": {"AUDIO": "(>K:HEADING_BUG_INC) @)"}}},
                                       {"name": "HDG", "commands": {}}]})~";
    expectFindings(
        {{planted, {"error refused: The element identifies no board", "warning unbalanced-bracket: Remove it"}}});
}

TEST(PlantedMistakes, AreFoundInProfilesOfAnyName) {
    const auto row = [](const std::string& profiles, const std::vector<std::string>& findings) {
        return Planted{withMembers(R"("outputs": {"defaultProfile": "1", "profiles": {)" + profiles + "}}"), findings};
    };
    expectFindings({
        row(R"("1": {"backlight": {"min": @-1}}, "dim": {"backlight": {"default": @500}})",
            {"error refused: Out of range, or min is above max", "error refused: "}),
        row(R"("1": {"backlight": {"min": 0, "max": @150}})", {"error refused: Out of range, or min is above max"}),
        row(R"("1": {}, "a]. b": {"backlight": {"value": @101}})", {"error refused: "}),
    });
}

TEST(PlantedMistakes, NoneInUsesOfTheDefaultProfile) {
    expectFindings({
        {withMembers(R"("outputs": {"roleProfiles": {"PFD": "default"}}, "devices": [{"index": 0, "role": "PFD"}])"),
         {}},
        {withMembers(R"("outputs": {"defaultProfile": "", "profiles": {"a": {}}}, "devices": [{"index": 0,
                        "ledProfile": "Default"}])"),
         {}},
    });
}

TEST(PlantedMistakes, BoardsWithOneIndexStillCountByTheirNames) {
    expectFindings({{withMembers(R"("devices": [{"boardId": "A1", "index": 0}, {"boardId": "B2", "index": @0}])"),
                     {"warning repeated-board: Remove the index here"}}});
}

TEST(PlantedMistakes, LettersBehindAnId) {
    expectFindings({{withConfig(R"({"hid": {"vid": @"16CO", "pid": "0x27db"},
                                    "mappings": {"buttonConfigPath": "buttons.json"}})"),
                     {"warning odd-id: Write up to four hexadecimal digits, such as \"16C0\""}}});
}

TEST(PlantedMistakes, AreLimitedInNumber) {
    EXPECT_EQ(WrittenConfiguration(withCommand(std::string(20000, ')'))).findings().size(), 21U);
    EXPECT_EQ(WrittenConfiguration(withCommand("(>K:" + std::string(100000, 'A') + ")")).findings().size(), 2U);
    std::string numbers = "1";
    for (int i = 0; i < 100000; ++i) {
        numbers += ",1";
    }
    EXPECT_LE(WrittenConfiguration(withButtons(R"({"buttons": [)" + numbers + "]}")).findings().size(), 200U);
}
