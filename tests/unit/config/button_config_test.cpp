#include "config/button_config.h"

#include "tests/support/config_samples.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <tuple>
#include <utility>

namespace {

ButtonConfig parsedButtons(std::string_view text) {
    ButtonConfig config;
    std::string error = "kept";
    EXPECT_TRUE(config.parse(text, error)) << error;
    EXPECT_EQ(error, "kept");
    return config;
}

/// The table of one control "A" with these commands.
ButtonConfig withCommands(const std::string& commands) {
    return parsedButtons(R"({"buttons":[{"name":"A","commands":)" + commands + "}]}");
}

TEST(ButtonConfigParse, ReadsButtonsAndKnobs) {
    const ButtonConfig config = parsedButtons(R"({"buttons":[{"name":"AP","commands":{"PRESS":{"DEFAULT":"b"}}}],
        "knobs":[{"name":"HDG","commands":{"CW":{"DEFAULT":"up"}}}]})");
    EXPECT_EQ(config.lookup("AP", "PRESS", ""), "b");
    EXPECT_EQ(config.lookup("HDG", "CW", ""), "up");
    EXPECT_FALSE(parsedButtons("{}").contains(""));
}

TEST(ButtonConfigParse, RefusesADocumentByItsFirstFault) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"buttons":{}})", "'buttons' must be an array"},
        {R"({"buttons":null})", "'buttons' must be an array"},
        {R"({"knobs":"x"})", "'knobs' must be an array"},
        {R"({"buttons":[],"knobs":1})", "'knobs' must be an array"},
        {R"({"buttons":[null]})", "buttons[0] must be an object"},
        {R"({"knobs":[{"name":"A"},{"name":"B"},3]})", "knobs[2] must be an object"},
        {R"({"knobs":1,"buttons":[1]})", "buttons[0] must be an object"},
        {R"({"buttons":[{"commands":"x"}]})", "buttons[0] missing name"},
        {R"({"buttons":[{"Name":"A"}]})", "buttons[0] missing name"},
        {R"({"knobs":[{"name":"A"},{"name":5}]})", "knobs[1] missing name"},
    };
    for (const auto& [text, expected] : cases) {
        ButtonConfig config;
        std::string error;
        EXPECT_FALSE(config.parse(text, error)) << text;
        EXPECT_EQ(error, expected) << text;
    }
}

TEST(ButtonConfigParse, KeepsWhatItReadBeforeAFailure) {
    ButtonConfig config;
    std::string error;
    EXPECT_FALSE(config.parse(
        R"({"buttons":[{"name":"A","commands":{"PRESS":{"DEFAULT":"x"}}},{"commands":{}},{"name":"B","commands":{}}]})",
        error));
    EXPECT_EQ(config.lookup("A", "PRESS", ""), "x");
    EXPECT_FALSE(config.contains("B"));
    EXPECT_FALSE(config.parse(R"({"buttons":[{"name":"C","commands":{}}],"knobs":{}})", error));
    EXPECT_TRUE(config.contains("C"));
}

TEST(ButtonConfigParse, KeepsTheOldTableUntilTheRootIsAnObject) {
    ButtonConfig config = parsedButtons(ConfigSamples::buttons("OLD", "PRESS", "DEFAULT", "x"));
    std::string error;
    EXPECT_FALSE(config.parse("{", error));
    EXPECT_FALSE(config.parse("[]", error));
    EXPECT_TRUE(config.contains("OLD"));
    EXPECT_FALSE(config.parse(R"({"buttons":1})", error));
    EXPECT_FALSE(config.contains("OLD"));
}

TEST(ButtonConfigParse, SkipsCommandsOfAnotherType) {
    const ButtonConfig config = parsedButtons(R"({"buttons":[{"name":"B","commands":"x"},{"name":"C"},
        {"name":"D","commands":[]},{"name":"E","commands":{}},
        {"name":"A","commands":{"PRESS":"x","HOLD":null,"RELEASE":{"PFD":5,"MFD":["x"],"DEFAULT":"kept"}}}]})");
    for (const char* name : {"B", "C", "D"}) {
        EXPECT_FALSE(config.contains(name)) << name;
    }
    EXPECT_TRUE(config.contains("E"));
    EXPECT_EQ(config.lookup("A", "PRESS", ""), "");
    EXPECT_EQ(config.lookup("A", "HOLD", ""), "");
    EXPECT_EQ(config.lookup("A", "RELEASE", "PFD"), "kept");
}

TEST(ButtonConfigParse, NormalisesKeysAtEveryLevelAndKeepsTheirZeroBytes) {
    const ButtonConfig config =
        parsedButtons(R"({"buttons":[{"name":" nav\u0000 swap ","commands":{" pr ess\t":{" p f d ":"x"}}}]})");
    EXPECT_TRUE(config.contains(std::string("NAV\0SWAP", 8)));
    EXPECT_FALSE(config.contains("NAV"));
    EXPECT_EQ(config.lookup(std::string_view(" nav\0swap", 9), "pre ss", "pfd\n"), "x");
}

TEST(ButtonConfigParse, MergesElementsOfOneName) {
    const ButtonConfig config = parsedButtons(R"({"buttons":[{"name":"a","commands":{"PRESS":{"PFD":"1","MFD":"2"}}},
        {"name":"A ","commands":{"press":{"PFD":"3"},"HOLD":{"DEFAULT":"4"}}}],
        "knobs":[{"name":"A","commands":{"PRESS":{"MFD":"5"}}}]})");
    EXPECT_EQ(config.lookup("A", "PRESS", "PFD"), "3");
    EXPECT_EQ(config.lookup("A", "PRESS", "MFD"), "5");
    EXPECT_EQ(config.lookup("A", "HOLD", ""), "4");
}

TEST(ButtonConfigParse, TakesTheLaterOfTwoKeysThatNormaliseAlike) {
    const ButtonConfig config = withCommands(R"({"press":{"pfd":"late","PFD":"early"},"PRESS":{"PFD":"earliest"}})");
    EXPECT_EQ(config.lookup("A", "PRESS", "PFD"), "late");
}

TEST(ButtonConfigParse, KeepsACommandByteForByteUpToItsFirstZeroByte) {
    const auto command = [](const std::string& text) {
        return withCommands(R"({"PRESS":{"DEFAULT":")" + text + "\"}}").lookup("A", "PRESS", "");
    };
    EXPECT_EQ(command("  (>K:ap_master)  1 + \xC3\xA9\\n"), "  (>K:ap_master)  1 + \xC3\xA9\n");
    EXPECT_EQ(command("ab\\u0000cd\\u0000"), "ab");
    EXPECT_EQ(command("\\u0000cd"), "");
}

TEST(ButtonConfigLookup, FallsBackToTheDefaultRoleOnly) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {R"({"PRESS":{"DEFAULT":"d","MFD":"m"}})", "mfd", "m"},
        {R"({"PRESS":{"DEFAULT":"d","MFD":"m"}})", "pfd", "d"},
        {R"({"PRESS":{"DEFAULT":"d","MFD":"m"}})", "", "d"},
        {R"({"PRESS":{"DEFAULT":"d","MFD":"m"}})", " ", "d"},
        // A role with an empty command has one: it stops the fall-back.
        {R"({"PRESS":{"DEFAULT":"d","MFD":""}})", "MFD", ""},
        {R"({"PRESS":{"DEFAULT":"d","MFD":"\u0000x"}})", "MFD", ""},
        {R"({"PRESS":{"PFD":"p"}})", "MFD", ""},
        {R"({"PRESS":{"PFD":"p"}})", "", ""},
        // An empty key is the default role, which a written DEFAULT beats; a blank one is a role of its own.
        {R"({"PRESS":{"":"x"}})", "PFD", "x"},
        {R"({"PRESS":{"":"x"}})", "DEFAULT", "x"},
        {R"({"PRESS":{"default":"x","":"y"}})", "", "x"},
        {R"({"PRESS":{" ":"x"}})", "", ""},
        {R"({"PRESS":{" ":"x"}})", "PFD", ""},
        {R"({"PRESS":{" ":"x"}})", " ", "x"},
        {R"({"PRESS_FAST":{"DEFAULT":"x"}})", "", ""},
    };
    for (const auto& [commands, role, command] : cases) {
        EXPECT_EQ(withCommands(commands).lookup("A", "PRESS", role), command) << commands << " / " << role;
    }
    EXPECT_EQ(withCommands(R"({"PRESS":{"DEFAULT":"d"}})").lookup("B", "PRESS", ""), "");
}

TEST(ButtonConfigLookup, FindsNothingForAnEmptyNameOrAction) {
    EXPECT_EQ(withCommands(R"({"":{"DEFAULT":"x"}})").lookup("A", "", ""), "");
    for (const char* name : {"", "  "}) {
        const ButtonConfig config = parsedButtons(ConfigSamples::buttons(name, "PRESS", "DEFAULT", "x"));
        EXPECT_EQ(config.lookup("", "PRESS", ""), "");
        EXPECT_EQ(config.lookup(" \t", "PRESS", ""), "");
    }
}

} // namespace
