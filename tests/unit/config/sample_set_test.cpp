// The sample set next to the built executable: every control does something on both displays, and nothing is misspelt.

#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "config/json.h"
#include "config/names.h"
#include "platform/file_system.h"
#include "platform/platform.h"
#include "simulation/simulator/command_check.h"
#include "tests/unit/config/config_texts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

constexpr const char* displays[] = {"PFD", "MFD"};

/// A command of the file and its place there.
struct Command {
    std::string control;
    std::string action;
    std::string role;
    std::string text;

    std::string place() const { return control + " " + action + " " + role + ": " + text; }
};

class SampleSet : public testing::Test {
protected:
    AppConfig config;
    ButtonConfig buttons;
    HidEventMap map;
    JsonValue buttonFile;
    JsonValue mapFile;

    void SetUp() override {
        std::string error;
        ASSERT_TRUE(loadAppConfig(pathOf("config.json"), config, error)) << error;
        ASSERT_TRUE(buttons.load(config.mappings.buttonConfigPath, error)) << error;
        ASSERT_TRUE(map.load(config.mappings.hidEventMapPath, error)) << error;
        buttonFile = parsed("buttons.json");
        mapFile = parsed("hid_event_map.json");
    }

    /// Test programs are one folder below the executable, which the set is next to.
    static std::string pathOf(const std::string& name) {
        const std::string testFolder = FileSystem::parentPath(systemPlatform().host.executablePath());
        return FileSystem::join(FileSystem::join(FileSystem::parentPath(testFolder), "config"), name);
    }

    static JsonValue parsed(const std::string& name) {
        std::string text;
        EXPECT_TRUE(FileSystem::readFile(pathOf(name), text)) << name;
        const JsonParseResult result = JsonParser::parse(text);
        EXPECT_TRUE(result.ok) << name << ": " << result.error;
        return result.value;
    }

    /// The names that a section of the command file lists, in file order.
    std::vector<std::string> listed(const char* section) const {
        std::vector<std::string> names;
        for (const JsonValue& element : find(buttonFile, section)->array) {
            names.push_back(find(element, "name")->string);
        }
        return names;
    }

    std::vector<Command> commands() const {
        std::vector<Command> all;
        for (const char* section : {"buttons", "knobs"}) {
            for (const JsonValue& element : find(buttonFile, section)->array) {
                addCommands(element, all);
            }
        }
        return all;
    }

    void expectCommand(const std::string& control, const std::string& action) const {
        for (const char* display : displays) {
            EXPECT_NE(buttons.lookup(control, action, display), "") << control << ' ' << action << ' ' << display;
        }
    }

private:
    static void addCommands(const JsonValue& element, std::vector<Command>& all) {
        for (const auto& [action, roles] : find(element, "commands")->object) {
            for (const auto& [role, text] : roles.object) {
                all.push_back({find(element, "name")->string, action, role, text.string});
            }
        }
    }
};

TEST_F(SampleSet, HasTheControlsOfATwoDisplayCockpit) {
    EXPECT_EQ(map.controlIds.size(), 57U);
    for (const char* name :
         {"SOFTKEY_1", "SOFTKEY_12", "RANGE", "MAP_PUSH", "FMS_OUTER", "FMS_INNER", "FMS_PUSH", "COM_VOL", "COM_OUTER",
          "COM_INNER", "COM_SWAP", "NAV_VOL", "HDG", "ALT_OUTER", "CRS", "BARO", "AP", "DIRECT_TO"}) {
        EXPECT_TRUE(buttons.contains(name)) << name;
    }
    for (const char* name :
         {"MENU", "FPL", "PROC", "CLR", "ENT", "MAP_LEFT", "MAP_RIGHT", "MAP_UP", "MAP_DOWN", "NAV_SWAP"}) {
        EXPECT_TRUE(buttons.contains(name)) << name;
    }
}

TEST_F(SampleSet, EveryControlWorksOnBothDisplays) {
    for (const std::string& control : listed("buttons")) {
        expectCommand(control, "PRESS");
    }
    for (const std::string& control : listed("knobs")) {
        expectCommand(control, "CW");
        expectCommand(control, "CCW");
    }
}

TEST_F(SampleSet, AFastTurnWorksBothWaysAndIsAnotherCommand) {
    std::size_t fastKnobs = 0;
    for (const std::string& control : listed("knobs")) {
        if (buttons.lookup(control, "CW_FAST", "PFD").empty()) {
            EXPECT_EQ(buttons.lookup(control, "CCW_FAST", "PFD"), "") << control;
            continue;
        }
        ++fastKnobs;
        expectCommand(control, "CW_FAST");
        expectCommand(control, "CCW_FAST");
        EXPECT_NE(buttons.lookup(control, "CW_FAST", "PFD"), buttons.lookup(control, "CW", "PFD")) << control;
    }
    EXPECT_EQ(fastKnobs, 7U);
}

TEST_F(SampleSet, ButtonsHaveOnlyButtonActionsAndKnobsOnlyTurns) {
    const std::set<std::string> ofKnobs{"CW", "CCW", "CW_FAST", "CCW_FAST"};
    const std::set<std::string> ofButtons{"PRESS", "HOLD", "RELEASE"};
    const std::vector<std::string> names = listed("knobs");
    const std::set<std::string> knobs(names.begin(), names.end());
    for (const Command& command : commands()) {
        const auto& actions = knobs.contains(command.control) ? ofKnobs : ofButtons;
        EXPECT_TRUE(actions.contains(command.action)) << command.place();
    }
}

TEST_F(SampleSet, EventMapAndCommandFileNameTheSameControls) {
    std::vector<std::string> inCommands = listed("buttons");
    const std::vector<std::string> knobs = listed("knobs");
    inCommands.insert(inCommands.end(), knobs.begin(), knobs.end());
    std::sort(inCommands.begin(), inCommands.end());
    std::vector<std::string> inMap;
    for (const auto& [id, name] : map.controlIds) {
        EXPECT_GE(id, 0) << name;
        EXPECT_EQ(name, normalizeName(name));
        inMap.push_back(name);
    }
    std::sort(inMap.begin(), inMap.end());
    EXPECT_EQ(inCommands, inMap);
}

TEST_F(SampleSet, NoNumberIsGivenTwice) {
    EXPECT_EQ(find(mapFile, "control_ids")->object.size(), map.controlIds.size());
    EXPECT_EQ(find(mapFile, "event_types")->object.size(), map.eventTypes.size());
    EXPECT_EQ(map.eventTypes,
              (std::map<std::int32_t, std::string>{{1, "BUTTON"}, {2, "ENCODER"}, {4, "BOARD_NOTICE"}}));
}

TEST_F(SampleSet, AutopilotKeysHaveTheNumbersOfTheBuiltInEvents) {
    const std::map<std::int32_t, std::string> expected{
        {5, "(>K:AP_MASTER)"},
        {6, "(>K:TOGGLE_FLIGHT_DIRECTOR)"},
        {7, "(>K:AP_HDG_HOLD)"},
        {8, "(>K:AP_ALT_HOLD)"},
        {9, "(>K:AP_NAV1_HOLD)"},
        {11, "(>K:AP_BC_HOLD)"},
        {12, "(>K:AP_APR_HOLD)"},
        {13, "(>K:AP_VS_HOLD)"},
        // The built-in event alone would keep whatever speed was selected before.
        {16, "(A:AUTOPILOT FLIGHT LEVEL CHANGE, bool) ! if{ (A:AIRSPEED INDICATED, knots) near (>K:AP_SPD_VAR_SET) } "
             "(>K:FLIGHT_LEVEL_CHANGE)"}};
    for (const auto& [id, command] : expected) {
        ASSERT_TRUE(map.controlIds.contains(id)) << id;
        EXPECT_EQ(buttons.lookup(map.controlIds.at(id), "PRESS", "MFD"), command);
    }
}

TEST_F(SampleSet, EveryEventIsKnownAndGetsTheValueThatItTakes) {
    for (const Command& command : commands()) {
        EXPECT_EQ(faultInCommand(command.text), "") << command.place();
        EXPECT_NE(command.text.find("(>"), std::string::npos) << command.place();
    }
}

TEST_F(SampleSet, ControlsDoWhatTheirNamesSay) {
    const std::map<std::pair<std::string, std::string>, std::string> expected{
        {{"BARO_PUSH", "PRESS"}, "1 (>K:BAROMETRIC_STD_PRESSURE)"},
        {{"HDG_PUSH", "PRESS"}, "(A:HEADING INDICATOR, degrees) near (>K:HEADING_BUG_SET)"},
        {{"HDG", "CW_FAST"}, "(A:AUTOPILOT HEADING LOCK DIR, degrees) 10 + dnor near (>K:HEADING_BUG_SET)"},
        {{"HDG", "CCW_FAST"}, "(A:AUTOPILOT HEADING LOCK DIR, degrees) 10 - dnor near (>K:HEADING_BUG_SET)"},
        {{"AP_NOSE_UP", "PRESS"},
         "(A:AUTOPILOT FLIGHT LEVEL CHANGE, bool) if{ (>K:AP_SPD_VAR_DEC) } els{ (A:AUTOPILOT VERTICAL HOLD, bool) "
         "if{ (>K:AP_VS_VAR_INC) } els{ (>K:AP_PITCH_REF_INC_UP) } }"},
        {{"AP_NOSE_DN", "PRESS"},
         "(A:AUTOPILOT FLIGHT LEVEL CHANGE, bool) if{ (>K:AP_SPD_VAR_INC) } els{ (A:AUTOPILOT VERTICAL HOLD, bool) "
         "if{ (>K:AP_VS_VAR_DEC) } els{ (>K:AP_PITCH_REF_INC_DN) } }"}};
    for (const auto& [place, command] : expected) {
        EXPECT_EQ(buttons.lookup(place.first, place.second, "PFD"), command);
    }
    EXPECT_EQ(buttons.lookup("AP_NOSE_DN", "HOLD", "PFD"), buttons.lookup("AP_NOSE_DN", "PRESS", "PFD"));
}

TEST_F(SampleSet, ADisplayNeverReachesForTheOther) {
    std::size_t displayCommands = 0;
    for (const Command& command : commands()) {
        const bool isForPfd = command.text.find("AS1000_PFD_") != std::string::npos;
        const bool isForMfd = command.text.find("AS1000_MFD_") != std::string::npos;
        EXPECT_FALSE(isForPfd && command.role != "PFD") << command.place();
        EXPECT_FALSE(isForMfd && command.role != "MFD") << command.place();
        displayCommands += isForPfd || isForMfd ? 1 : 0;
    }
    EXPECT_GT(displayCommands, 100U);
}

TEST_F(SampleSet, BothDisplaysHaveTheSameActions) {
    std::map<std::string, std::set<std::string>> rolesOf;
    for (const Command& command : commands()) {
        rolesOf[command.control + " " + command.action].insert(command.role);
    }
    for (const auto& [action, roles] : rolesOf) {
        EXPECT_TRUE(roles == std::set<std::string>{"DEFAULT"} || roles == (std::set<std::string>{"PFD", "MFD"}))
            << action;
    }
}

TEST_F(SampleSet, NoCommandIsCutOnItsWay) {
    // The module's area takes 255 bytes, and the bridge puts "MF.SimVars.Set.1 " in front.
    constexpr std::size_t longest = 255 - 17;
    for (const Command& command : commands()) {
        EXPECT_LE(command.text.size(), longest) << command.place();
    }
}

TEST_F(SampleSet, TwoBoardsHaveTheirRolesByNumberAndAProfileEach) {
    for (std::int32_t index = 0; index < 2; ++index) {
        const DeviceEntry* entry = findDeviceEntry(config, "", index);
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->role, displays[index]);
        EXPECT_EQ(resolveProfile(config, entry), &config.outputs.profiles.at("PANEL"));
    }
}

TEST_F(SampleSet, GivesTheDefaultsButTurnsEveryExtensionOnAndWatchesTheFirstBattery) {
    std::vector<std::string> expected = sectionsOf(AppConfig());
    expected[0] = "1234|ABCD|2|1000|0|";
    expected[1] = joined(pathOf("buttons.json"), pathOf("hid_event_map.json"));
    expected[5] = joined(1, 1, 1, 1, 1, 1, AppConfig().extensions.lightVariable);
    EXPECT_EQ(sectionsOf(config), expected);
    EXPECT_EQ(config.outputs.debounceMs, AppConfig().outputs.debounceMs);
    OutputProfile panel = makeDefaultProfile();
    panel.backlight.mode = "LVAR";
    panel.simDisconnected.effect = "FLASH";
    panel.batteryOff.effect = "BREATHE";
    EXPECT_EQ(textOf(config.outputs.profiles.at("PANEL")), textOf(panel));
}

} // namespace
