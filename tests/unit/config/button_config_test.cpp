#include "config/button_config.h"

#include "tests/support/config_samples.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

std::string errorOf(std::string_view text) {
    ButtonConfig config;
    std::string error;
    const bool loaded = config.parse(text, error);
    EXPECT_EQ(loaded, error.empty()) << text;
    return error;
}

ButtonConfig parsed(std::string_view text) {
    ButtonConfig config;
    std::string error;
    EXPECT_TRUE(config.parse(text, error)) << error;
    return config;
}

/// The table of one control "A" with these commands.
ButtonConfig withCommands(const std::string& commands) {
    return parsed(R"({"buttons":[{"name":"A","commands":)" + commands + "}]}");
}

} // namespace

TEST(ButtonConfigParse, AnEmptyObjectGivesAnEmptyTable) {
    const ButtonConfig config = parsed("{}");
    EXPECT_EQ(config.lookup("A", "PRESS", "PFD"), "");
    EXPECT_FALSE(config.contains("A"));
    EXPECT_FALSE(config.contains(""));
}

TEST(ButtonConfigParse, ANewTableIsEmpty) {
    EXPECT_EQ(ButtonConfig().lookup("A", "PRESS", ""), "");
}

TEST(ButtonConfigParse, ReadsButtonsAndKnobs) {
    const ButtonConfig config = parsed(R"({"buttons":[{"name":"AP","commands":{"PRESS":{"DEFAULT":"b"}}}],
        "knobs":[{"name":"HDG","commands":{"CW":{"DEFAULT":"up"},"CCW":{"DEFAULT":"down"}}}]})");
    EXPECT_EQ(config.lookup("AP", "PRESS", ""), "b");
    EXPECT_EQ(config.lookup("HDG", "CW", ""), "up");
    EXPECT_EQ(config.lookup("HDG", "CCW", ""), "down");
}

TEST(ButtonConfigParse, PutsItsPrefixBeforeAParseError) {
    EXPECT_EQ(errorOf("{"), "Button config parse error: Unterminated object");
}

TEST(ButtonConfigParse, NeedsAnObjectAtTheRoot) {
    EXPECT_EQ(errorOf("[]"), "Button config root must be an object");
}

TEST(ButtonConfigParse, NeedsArrays) {
    EXPECT_EQ(errorOf(R"({"buttons":{}})"), "'buttons' must be an array");
    EXPECT_EQ(errorOf(R"({"buttons":null})"), "'buttons' must be an array");
    EXPECT_EQ(errorOf(R"({"knobs":"x"})"), "'knobs' must be an array");
    EXPECT_EQ(errorOf(R"({"buttons":[],"knobs":1})"), "'knobs' must be an array");
}

TEST(ButtonConfigParse, NeedsObjectsAsElements) {
    EXPECT_EQ(errorOf(R"({"knobs":[{"name":"A"},{"name":"B"},3]})"), "knobs[2] must be an object");
    EXPECT_EQ(errorOf(R"({"buttons":[null]})"), "buttons[0] must be an object");
}

TEST(ButtonConfigParse, NeedsANameInEachElement) {
    EXPECT_EQ(errorOf(R"({"buttons":[{}]})"), "buttons[0] missing name");
    EXPECT_EQ(errorOf(R"({"knobs":[{"name":"A"},{"name":5}]})"), "knobs[1] missing name");
    EXPECT_EQ(errorOf(R"({"buttons":[{"Name":"A"}]})"), "buttons[0] missing name");
}

TEST(ButtonConfigParse, TellsTheNameBeforeItLooksAtTheCommands) {
    EXPECT_EQ(errorOf(R"({"buttons":[{"commands":"x"}]})"), "buttons[0] missing name");
}

TEST(ButtonConfigParse, TellsButtonsBeforeKnobs) {
    EXPECT_EQ(errorOf(R"({"knobs":1,"buttons":[1]})"), "buttons[0] must be an object");
}

TEST(ButtonConfigParse, KeepsTheElementsReadBeforeAFailure) {
    ButtonConfig config;
    std::string error;
    EXPECT_FALSE(config.parse(
        R"({"buttons":[{"name":"A","commands":{"PRESS":{"DEFAULT":"x"}}},{"commands":{}},{"name":"B","commands":{}}]})",
        error));
    EXPECT_EQ(error, "buttons[1] missing name");
    EXPECT_EQ(config.lookup("A", "PRESS", ""), "x");
    EXPECT_FALSE(config.contains("B"));
}

TEST(ButtonConfigParse, KeepsTheButtonsWhenTheKnobsFail) {
    ButtonConfig config;
    std::string error;
    EXPECT_FALSE(config.parse(R"({"buttons":[{"name":"A","commands":{}}],"knobs":{}})", error));
    EXPECT_TRUE(config.contains("A"));
}

TEST(ButtonConfigParse, KeepsTheOldTableUntilTheRootIsGood) {
    ButtonConfig config = parsed(ConfigSamples::buttons("OLD", "PRESS", "DEFAULT", "x"));
    std::string error;
    EXPECT_FALSE(config.parse("{", error));
    EXPECT_FALSE(config.parse("[]", error));
    EXPECT_TRUE(config.contains("OLD"));
    EXPECT_FALSE(config.parse(R"({"buttons":1})", error));
    EXPECT_FALSE(config.contains("OLD"));
}

TEST(ButtonConfigParse, ReplacesTheOldTable) {
    ButtonConfig config = parsed(ConfigSamples::buttons("OLD", "PRESS", "DEFAULT", "x"));
    std::string error;
    EXPECT_TRUE(config.parse(ConfigSamples::buttons("NEW", "PRESS", "DEFAULT", "y"), error));
    EXPECT_FALSE(config.contains("OLD"));
    EXPECT_TRUE(config.contains("NEW"));
}

TEST(ButtonConfigParse, AnElementWithoutCommandsAddsNotEvenItsName) {
    const ButtonConfig config =
        parsed(R"({"buttons":[{"name":"A","commands":"x"},{"name":"B"},{"name":"C","commands":[]},
        {"name":"D","commands":{}}]})");
    EXPECT_FALSE(config.contains("A"));
    EXPECT_FALSE(config.contains("B"));
    EXPECT_FALSE(config.contains("C"));
    EXPECT_TRUE(config.contains("D"));
}

TEST(ButtonConfigParse, SkipsActionsAndCommandsOfAnotherKind) {
    const ButtonConfig config =
        withCommands(R"({"PRESS":"x","HOLD":null,"RELEASE":{"PFD":5,"MFD":["x"],"DEFAULT":"kept"}})");
    EXPECT_TRUE(config.contains("A"));
    EXPECT_EQ(config.lookup("A", "PRESS", ""), "");
    EXPECT_EQ(config.lookup("A", "HOLD", ""), "");
    EXPECT_EQ(config.lookup("A", "RELEASE", "PFD"), "kept");
    EXPECT_EQ(config.lookup("A", "RELEASE", "MFD"), "kept");
}

TEST(ButtonConfigParse, NormalisesKeysAtEveryLevel) {
    const ButtonConfig config =
        parsed(R"({"buttons":[{"name":" nav swap ","commands":{" pr ess\t":{" p f d ":"x"}}}]})");
    EXPECT_TRUE(config.contains("NAVSWAP"));
    EXPECT_EQ(config.lookup("NAVSWAP", "PRESS", "PFD"), "x");
}

TEST(ButtonConfigParse, MergesElementsOfOneName) {
    const ButtonConfig config = parsed(R"({"buttons":[{"name":"a","commands":{"PRESS":{"PFD":"1","MFD":"2"}}},
        {"name":"A ","commands":{"press":{"PFD":"3"},"HOLD":{"DEFAULT":"4"}}}],
        "knobs":[{"name":"A","commands":{"PRESS":{"MFD":"5"}}}]})");
    EXPECT_EQ(config.lookup("A", "PRESS", "PFD"), "3");
    EXPECT_EQ(config.lookup("A", "PRESS", "MFD"), "5");
    EXPECT_EQ(config.lookup("A", "HOLD", ""), "4");
}

TEST(ButtonConfigParse, OfTwoKeysThatNormaliseAlikeTheLaterInOrderCounts) {
    const ButtonConfig config = withCommands(R"({"press":{"pfd":"late","PFD":"early"},"PRESS":{"PFD":"earliest"}})");
    EXPECT_EQ(config.lookup("A", "PRESS", "PFD"), "late");
}

TEST(ButtonConfigParse, AnEmptyRoleKeyStandsForDefault) {
    EXPECT_EQ(withCommands(R"({"PRESS":{"":"x"}})").lookup("A", "PRESS", "PFD"), "x");
    EXPECT_EQ(withCommands(R"({"PRESS":{"":"x"}})").lookup("A", "PRESS", "DEFAULT"), "x");
}

TEST(ButtonConfigParse, AWrittenDefaultBeatsAnEmptyRoleKey) {
    EXPECT_EQ(withCommands(R"({"PRESS":{"default":"x","":"y"}})").lookup("A", "PRESS", ""), "x");
}

TEST(ButtonConfigParse, ABlankRoleKeyIsARoleOfItsOwn) {
    const ButtonConfig config = withCommands(R"({"PRESS":{" ":"x"}})");
    EXPECT_EQ(config.lookup("A", "PRESS", ""), "");
    EXPECT_EQ(config.lookup("A", "PRESS", "PFD"), "");
    EXPECT_EQ(config.lookup("A", "PRESS", " "), "x");
}

TEST(ButtonConfigParse, CutsACommandAtItsFirstZeroByte) {
    EXPECT_EQ(withCommands(R"({"PRESS":{"DEFAULT":"ab\u0000cd\u0000"}})").lookup("A", "PRESS", ""), "ab");
    EXPECT_EQ(withCommands(R"({"PRESS":{"DEFAULT":"\u0000cd"}})").lookup("A", "PRESS", ""), "");
}

TEST(ButtonConfigParse, ACommandCutToNothingStillAnswersItsRole) {
    EXPECT_EQ(withCommands(R"({"PRESS":{"MFD":"\u0000x","DEFAULT":"y"}})").lookup("A", "PRESS", "MFD"), "");
}

TEST(ButtonConfigParse, KeepsACommandByteForByte) {
    const ButtonConfig config = withCommands("{\"PRESS\":{\"DEFAULT\":\"  (>K:ap_master)  1 + \xC3\xA9\\n\"}}");
    EXPECT_EQ(config.lookup("A", "PRESS", ""), "  (>K:ap_master)  1 + \xC3\xA9\n");
}

TEST(ButtonConfigParse, KeepsZeroBytesOfNames) {
    const ButtonConfig config = parsed(ConfigSamples::buttons("A\\u0000b", "PRESS", "DEFAULT", "x"));
    EXPECT_FALSE(config.contains("A"));
    EXPECT_EQ(config.lookup(std::string_view("a\0B", 3), "PRESS", ""), "x");
}

TEST(ButtonConfigParse, LeavesTheErrorAloneOnSuccess) {
    ButtonConfig config;
    std::string error = "kept";
    EXPECT_TRUE(config.parse("{}", error));
    EXPECT_EQ(error, "kept");
}

TEST(ButtonConfigLookup, NormalisesItsArguments) {
    const ButtonConfig config = parsed(ConfigSamples::buttons("AP_MASTER", "PRESS", "PFD", "x"));
    EXPECT_EQ(config.lookup(" ap_master", "pre ss", "pfd\n"), "x");
}

TEST(ButtonConfigLookup, FallsBackToTheDefaultRole) {
    EXPECT_EQ(withCommands(R"({"PRESS":{"DEFAULT":"d"}})").lookup("A", "PRESS", "mfd"), "d");
}

TEST(ButtonConfigLookup, ARolesOwnCommandBeatsTheDefaultOne) {
    const ButtonConfig config = withCommands(R"({"PRESS":{"DEFAULT":"d","MFD":"m"}})");
    EXPECT_EQ(config.lookup("A", "PRESS", "mfd"), "m");
    EXPECT_EQ(config.lookup("A", "PRESS", "pfd"), "d");
    EXPECT_EQ(config.lookup("A", "PRESS", ""), "d");
    EXPECT_EQ(config.lookup("A", "PRESS", " "), "d");
}

TEST(ButtonConfigLookup, AnEmptyCommandStopsTheFallBack) {
    EXPECT_EQ(withCommands(R"({"PRESS":{"DEFAULT":"d","MFD":""}})").lookup("A", "PRESS", "MFD"), "");
}

TEST(ButtonConfigLookup, ARoleWithoutACommandAndWithoutADefaultGivesNothing) {
    EXPECT_EQ(withCommands(R"({"PRESS":{"PFD":"p"}})").lookup("A", "PRESS", "MFD"), "");
    EXPECT_EQ(withCommands(R"({"PRESS":{"PFD":"p"}})").lookup("A", "PRESS", ""), "");
}

TEST(ButtonConfigLookup, KnowsNoFallBackBetweenActionsOrNames) {
    const ButtonConfig config = withCommands(R"({"CW":{"DEFAULT":"x"}})");
    EXPECT_EQ(config.lookup("A", "CW_FAST", ""), "");
    EXPECT_EQ(config.lookup("B", "CW", ""), "");
}

TEST(ButtonConfigLookup, AnEmptyNameOrActionGivesNothing) {
    const ButtonConfig config =
        parsed(R"({"buttons":[{"name":"A","commands":{"":{"DEFAULT":"x"},"PRESS":{"DEFAULT":"y"}}}]})");
    EXPECT_EQ(config.lookup("", "PRESS", ""), "");
    EXPECT_EQ(config.lookup("A", "", ""), "");
}

TEST(ButtonConfigLookup, NoLookupReachesANameThatNormalisesToNothing) {
    for (const char* name : {"", "  "}) {
        const ButtonConfig config = parsed(ConfigSamples::buttons(name, "PRESS", "DEFAULT", "x"));
        EXPECT_EQ(config.lookup("", "PRESS", ""), "");
        EXPECT_EQ(config.lookup(" \t", "PRESS", ""), "");
    }
}

TEST(ButtonConfigContains, AsksForTheNormalisedName) {
    const ButtonConfig config = parsed(ConfigSamples::buttons("Nav Swap", "PRESS", "DEFAULT", "x"));
    EXPECT_TRUE(config.contains("NAVSWAP"));
    EXPECT_FALSE(config.contains("Nav Swap"));
}

TEST(ButtonConfigLookup, FindsEachOfThousandsOfControls) {
    std::string text = "{\"knobs\":[";
    for (int number = 0; number < 5000; ++number) {
        const std::string digits = std::to_string(number);
        text += R"({"name":"knob )" + digits + R"(","commands":{"CW":{"DEFAULT":"c)" + digits + "\"}}},";
    }
    text.back() = ']';
    const ButtonConfig config = parsed(text + "}");
    for (int number = 0; number < 5000; ++number) {
        const std::string digits = std::to_string(number);
        ASSERT_EQ(config.lookup("KNOB" + digits, "cw", "any"), "c" + digits);
    }
}
