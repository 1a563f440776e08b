#include "companion/demo/cockpit_configuration.h"

#include "companion/demo/panel_json.h"
#include "simulation/scenarios/json_text.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* settingsText = R"({
  "hid": {"vid": "0x12AB", "pid": "CD"},
  "mappings": {"buttonConfigPath": "my-buttons.json"},
  "logging": {"debug": 0},
  "devices": [{"index": 7, "role": "PFD"}, {"boardId": "0011223344556677", "role": "mfd"}]
})";
constexpr const char* buttonsText = R"json({
  "buttons": [{"name": "AP", "commands": {"PRESS": {"DEFAULT": "1 (>K:AP_MASTER)"}}}, {"name": "BARE", "commands": {}}],
  "knobs": [{"name": "FMS", "commands": {"CW": {"PFD": "(>H:UP)"}, "CCW_FAST": {"MFD": "(>H:DOWN_FAST)"}}}]
})json";
constexpr const char* mapText =
    R"({"event_types": {"BUTTON": 1}, "control_ids": {"AP": 5, "BARE": 6, "FMS": 7, "UNLISTED": 8, "FAR": 70000}})";

/// A configuration of its own in a folder.
class CockpitConfigurationTest : public testing::Test {
protected:
    void SetUp() override {
        folder.write("my-buttons.json", buttonsText);
        folder.write("hid_event_map.json", mapText);
        path = folder.write("config.json", settingsText);
    }

    void load() { EXPECT_TRUE(loadCockpitConfiguration(path, configuration, error)) << error; }

    /// The names, kinds and commands of a panel's controls, as text.
    std::vector<std::string> controls(const std::string& role) const {
        std::vector<std::string> texts;
        for (const JsonValue& one : panelControls(configuration, role).array) {
            texts.push_back(jsonText(one));
        }
        return texts;
    }

    TempFolder folder;
    std::string path;
    CockpitConfiguration configuration;
    std::string error;
};

} // namespace

TEST_F(CockpitConfigurationTest, TakesAUsersOwnFilesWhereTheyAreAndSwitchesDebugLinesOn) {
    load();
    EXPECT_EQ(configuration.title, path);
    EXPECT_EQ(configuration.files.size(), 1U);
    const JsonValue settings = JsonParser::parse(configuration.files.at("config.json")).value;
    EXPECT_EQ(find(*find(settings, "mappings"), "buttonConfigPath")->string, folder.path("my-buttons.json"));
    EXPECT_EQ(find(*find(settings, "mappings"), "hidEventMapPath")->string, folder.path("hid_event_map.json"));
    EXPECT_EQ(find(*find(settings, "logging"), "debug")->number, 1);
}

TEST_F(CockpitConfigurationTest, MakesBoardsOfTheConfiguredVendorAndIdentity) {
    load();
    const std::vector<RigBoard> panels = configuredPanels(configuration);
    ASSERT_EQ(panels.size(), 2U);
    EXPECT_EQ(panels[0].name, "PFD");
    EXPECT_EQ(panels[0].model.vendorId, 0x12AB);
    EXPECT_EQ(panels[0].model.productId, 0x00CD);
    EXPECT_EQ(panels[0].model.boardId, (HidProtocol::BoardId{0xE6, 0x61, 0x38, 0xA1, 0xB2, 0xC3, 0xD4, 0xE5}));
    EXPECT_EQ(panels[1].name, "MFD");
    EXPECT_EQ(panels[1].model.boardId, (HidProtocol::BoardId{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77}));
    const VirtualBoardModel named = configuredBoard(configuration, "SN-4711");
    EXPECT_FALSE(named.boardId);
    EXPECT_EQ(named.serial, "SN-4711");
}

TEST_F(CockpitConfigurationTest, GivesThePageEachControlThatABoardCanReport) {
    load();
    const std::string first =
        R"json({"commands": {"PRESS": "1 (>K:AP_MASTER)"}, "id": 5, "kind": "button", "listed": true, "name": "AP"})json";
    EXPECT_EQ(controls("PFD"),
              (std::vector<std::string>{
                  first, R"json({"commands": {}, "id": 6, "kind": "button", "listed": true, "name": "BARE"})json",
                  R"json({"commands": {"CW": "(>H:UP)"}, "id": 7, "kind": "knob", "listed": true, "name": "FMS"})json",
                  R"json({"commands": {}, "id": 8, "kind": "button", "listed": false, "name": "UNLISTED"})json"}));
    // What turns on one panel is a knob on both.
    EXPECT_EQ(
        controls("MFD").at(2),
        R"json({"commands": {"CCW_FAST": "(>H:DOWN_FAST)"}, "id": 7, "kind": "knob", "listed": true, "name": "FMS"})json");
}

TEST_F(CockpitConfigurationTest, GoesOnWithABrokenEventMapAsTheBridgeDoes) {
    folder.write("hid_event_map.json", "{");
    load();
    EXPECT_TRUE(controls("PFD").empty());
}

TEST_F(CockpitConfigurationTest, SaysWhyAConfigurationCannotBeUsed) {
    folder.write("my-buttons.json", "{");
    for (const std::string& file : {path, folder.path("absent.json")}) {
        EXPECT_FALSE(loadCockpitConfiguration(file, configuration, error));
        EXPECT_TRUE(error.starts_with(file + ": ")) << error;
    }
}

TEST(SampleConfiguration, IsBuiltInWithPanelsOfBothRoles) {
    CockpitConfiguration configuration;
    std::string error;
    ASSERT_TRUE(loadCockpitConfiguration("", configuration, error)) << error;
    EXPECT_EQ(configuration.title, "the sample set");
    EXPECT_EQ(configuration.files.size(), 3U);
    for (const char* role : {"PFD", "MFD"}) {
        const JsonValue controls = panelControls(configuration, role);
        EXPECT_GT(controls.array.size(), 40U);
        for (const JsonValue& one : controls.array) {
            EXPECT_FALSE(one.object.at("commands").object.empty()) << one.object.at("name").string;
        }
    }
}
