// The sample set as it lies beside the built executable: every control does something on both displays, and nothing in
// it is misspelt.

#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "config/json.h"
#include "config/names.h"
#include "platform/file_system.h"
#include "platform/platform.h"
#include "simulation/simulator/command_check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

constexpr const char* displays[] = {"PFD", "MFD"};

/// A command of the file and where it stands.
struct Command {
    std::string control;
    std::string action;
    std::string role;
    std::string text;

    std::string place() const { return control + " " + action + " " + role + ": " + text; }
};

template <typename Names>
bool stands(const Names& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// All that a pattern's first group matches in a text.
std::vector<std::string> found(const std::string& text, const char* pattern) {
    const std::regex expression(pattern);
    std::vector<std::string> matches;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match) {
        matches.push_back((*match)[1]);
    }
    return matches;
}

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

    /// Test programs lie one folder below the executable, whose neighbour the set is.
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
         {"SOFTKEY_1", "SOFTKEY_12", "RANGE",    "MAP_PUSH", "FMS_OUTER", "FMS_INNER", "FMS_PUSH", "COM_VOL",
          "COM_OUTER", "COM_INNER",  "COM_SWAP", "NAV_VOL",  "HDG",       "ALT_OUTER", "CRS",      "BARO",
          "AP",        "DIRECT_TO",  "MENU",     "FPL",      "PROC",      "CLR",       "ENT"}) {
        EXPECT_TRUE(buttons.contains(name)) << name;
    }
}

TEST_F(SampleSet, HasTheNamesThatTheBridgeTreatsApart) {
    for (const char* name : {"MAP_LEFT", "MAP_RIGHT", "MAP_UP", "MAP_DOWN", "NAV_SWAP"}) {
        EXPECT_TRUE(buttons.contains(name)) << name;
        EXPECT_NE(find(*find(mapFile, "control_ids"), name), nullptr) << name;
    }
}

TEST_F(SampleSet, EveryButtonHasAPressOnBothDisplays) {
    ASSERT_FALSE(listed("buttons").empty());
    for (const std::string& control : listed("buttons")) {
        expectCommand(control, "PRESS");
    }
}

TEST_F(SampleSet, EveryKnobTurnsBothWaysOnBothDisplays) {
    ASSERT_FALSE(listed("knobs").empty());
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
    const std::set<std::string> ofButtons{"PRESS", "HOLD", "RELEASE"};
    const std::set<std::string> ofKnobs{"CW", "CCW", "CW_FAST", "CCW_FAST"};
    const std::vector<std::string> knobs = listed("knobs");
    for (const Command& command : commands()) {
        EXPECT_TRUE((stands(knobs, command.control) ? ofKnobs : ofButtons).contains(command.action)) << command.place();
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
}

TEST_F(SampleSet, AHeldNoseKeyRepeatsItsPress) {
    for (const char* control : {"AP_NOSE_UP", "AP_NOSE_DN"}) {
        EXPECT_EQ(buttons.lookup(control, "HOLD", "PFD"), buttons.lookup(control, "PRESS", "PFD")) << control;
    }
}

TEST_F(SampleSet, ADisplayNeverReachesForTheOther) {
    std::size_t displayCommands = 0;
    for (const Command& command : commands()) {
        for (const std::string& display : found(command.text, "AS1000_([PM]FD)_")) {
            ++displayCommands;
            EXPECT_EQ(display, command.role) << command.place();
        }
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

TEST_F(SampleSet, TurnsEveryExtensionOnAndWatchesTheFirstBattery) {
    EXPECT_TRUE(config.extensions.singlePendingRead);
    EXPECT_TRUE(config.extensions.reopenStoppedReaders);
    EXPECT_TRUE(config.extensions.renewRegistration);
    EXPECT_TRUE(config.extensions.ownChannels);
    EXPECT_TRUE(config.extensions.lvarNumbers);
    EXPECT_EQ(config.extensions.batteryIndex, 1);
    EXPECT_EQ(config.extensions.lightVariable, AppConfig().extensions.lightVariable);
}

TEST_F(SampleSet, SettingsSayWhatTheDefaultsAre) {
    const AppConfig defaults;
    EXPECT_EQ(config.hid.scanIntervalMs, defaults.hid.scanIntervalMs);
    EXPECT_EQ(config.hid.trace, defaults.hid.trace);
    EXPECT_EQ(config.mobiflight.enabled, defaults.mobiflight.enabled);
    EXPECT_EQ(config.mobiflight.rpnRateLimitMs, defaults.mobiflight.rpnRateLimitMs);
    EXPECT_EQ(config.mobiflight.mapHoldRepeatMs, defaults.mobiflight.mapHoldRepeatMs);
    EXPECT_EQ(config.logging.debug, defaults.logging.debug);
    EXPECT_EQ(config.outputs.debounceMs, defaults.outputs.debounceMs);
    const OutputProfile expected = makeDefaultProfile();
    const OutputProfile& actual = config.outputs.profiles.at("PANEL");
    EXPECT_EQ(actual.backlight.defaultValue, expected.backlight.defaultValue);
    EXPECT_EQ(actual.backlight.scale, expected.backlight.scale);
    EXPECT_EQ(actual.simDisconnected.param0, expected.simDisconnected.param0);
    EXPECT_EQ(actual.simDisconnected.param1, expected.simDisconnected.param1);
    EXPECT_EQ(actual.batteryOff.param1, expected.batteryOff.param1);
    EXPECT_EQ(actual.batteryOff.param2, expected.batteryOff.param2);
}

} // namespace
