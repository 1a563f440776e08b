#include "config/app_config.h"

#include "tests/unit/config/config_texts.h"
#include "tests/unit/config/parsed_config.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using Sections = std::vector<std::string>;

const Sections defaults{
    "0x1234|ABCD|2|1000|0|",
    "buttons.json||",
    "1|VantrelBridgeHID|MobiFlight.Command|MobiFlight.Response|MobiFlight.LVars|0|10|",
    "0||",
    "0|",
    "0|0|0|0|0|2|(L:LIGHTING_POTENTIOMETER_5)|",
};

TEST(AppConfig, HasItsDefaultsWhereTheFileSaysNothing) {
    EXPECT_EQ(sectionsOf(configWith("")), defaults);
}

TEST(AppConfig, ReadsEverySetting) {
    const AppConfig config = parsed(R"json({
        "hid": {"vid": "0xCAFE", "pid": "BEEF", "readIntervalMs": 5, "scanIntervalMs": 250, "trace": 1},
        "mappings": {"buttonConfigPath": "b.json", "hidEventMapPath": "map.json"},
        "mobiflight": {"enabled": 0, "clientName": "Name", "commandChannel": "C", "responseChannel": "R",
                       "lvarsChannel": "L", "rpnRateLimitMs": 30, "mapHoldRepeatMs": 20},
        "cdc": {"enabled": 1, "comPort": "COM3"},
        "logging": {"debug": 1},
        "extensions": {"singlePendingRead": 1, "reopenStoppedReaders": 1, "renewRegistration": 1, "ownChannels": 1,
                       "lvarNumbers": 1, "batteryIndex": 1, "lightVariable": "(A:LIGHT POTENTIOMETER:3, percent)"}
        })json");
    EXPECT_EQ(sectionsOf(config), (Sections{"0xCAFE|BEEF|5|250|1|", "b.json|map.json|", "0|Name|C|R|L|30|20|",
                                            "1|COM3|", "1|", "1|1|1|1|1|1|(A:LIGHT POTENTIOMETER:3, percent)|"}));
}

TEST(AppConfig, RefusesADocumentByItsFirstFault) {
    const std::string hid = R"({"hid":{"vid":"1","pid":"2"})";
    const std::pair<std::string, const char*> cases[] = {
        {"{}", "Missing 'hid' section"},
        {R"({"hid":[]})", "Missing 'hid' section"},
        {R"({"HID":{"vid":"1","pid":"2"}})", "Missing 'hid' section"},
        {R"({"hid":{}})", "Missing or invalid 'hid.vid'"},
        {R"({"hid":{"vid":4660,"pid":"2"}})", "Missing or invalid 'hid.vid'"},
        {R"({"hid":{"Vid":"1","pid":"2"}})", "Missing or invalid 'hid.vid'"},
        {R"({"hid":{"vid":"1"}})", "Missing or invalid 'hid.pid'"},
        {R"({"hid":{"vid":"","pid":null}})", "Missing or invalid 'hid.pid'"},
        {hid + "}", "Missing 'mappings' section"},
        {hid + R"(,"mappings":"b"})", "Missing 'mappings' section"},
        {hid + R"(,"mappings":{}})", "Missing or invalid 'mappings.buttonConfigPath'"},
        {hid + R"(,"mappings":{"buttonConfigPath":1}})", "Missing or invalid 'mappings.buttonConfigPath'"},
        {R"({"hid":{"vid":"","pid":""},"mappings":{"buttonConfigPath":""},"devices":1})", "'devices' must be an array"},
    };
    for (const auto& [text, error] : cases) {
        EXPECT_EQ(errorOf(text), error) << text;
    }
}

TEST(AppConfig, SwitchesOnForAnyWholeNumberButZeroAndIgnoresBooleans) {
    const auto isOn = [](const std::string& value) {
        return configWith(R"("logging":{"debug":)" + value + "}").logging.debug;
    };
    for (const char* on : {"1", "-3.5", "1e10"}) {
        EXPECT_TRUE(isOn(on)) << on;
    }
    for (const char* off : {"0", "0.5", "-0.9", "true", "\"1\""}) {
        EXPECT_FALSE(isOn(off)) << off;
    }
    EXPECT_TRUE(configWith(R"("mobiflight":{"enabled":false})").mobiflight.enabled);
}

TEST(AppConfig, IgnoresSectionsAndMembersOfAnotherTypeAndUnknownKeys) {
    const AppConfig config = parsed(R"({"$schema":"x","extra":{"a":[1]},"cdc":1,"logging":"on","outputs":null,
        "hid":{"vid":"0x1234","pid":"ABCD","readIntervalMs":"7","scanIntervalMs":null,"trace":true},
        "mappings":{"buttonConfigPath":"buttons.json","hidEventMapPath":5},"extensions":[],
        "mobiflight":{"Enabled":0,"more":{},"commandChannel":null,"lvarsChannel":5}})");
    EXPECT_EQ(sectionsOf(config), defaults);
    EXPECT_EQ(config.outputs.debounceMs, 50);
    EXPECT_EQ(sectionsOf(configWith(R"("mobiflight":[0])")), defaults);
}

TEST(AppConfig, KeepsWhatTheFileDoesNotGive) {
    AppConfig given;
    given.hid = {"", "", 11, 12, true};
    given.mobiflight = {false, "Given", "C", "R", "L", 13, 14};
    given.cdc = {true, "COM9"};
    given.logging.debug = true;
    given.extensions = {true, true, true, true, true, 3, "L"};
    const AppConfig config =
        configWith(R"("mobiflight":{"rpnRateLimitMs":1},"cdc":{},"logging":{"debug":true})", given);
    EXPECT_EQ(sectionsOf(config), (Sections{"0x1234|ABCD|11|12|1|", "buttons.json||", "0|Given|C|R|L|1|14|", "1|COM9|",
                                            "1|", "1|1|1|1|1|3|L|"}));
}

TEST(AppConfig, ForgetsTheEventMapPathAndTheOutputsAtEachLoad) {
    AppConfig given;
    given.mappings.hidEventMapPath = "old.json";
    given.outputs.debounceMs = 99;
    given.outputs.profiles["OLD"] = makeDefaultProfile();
    given.outputs.roleProfiles["PFD"] = "OLD";
    given.outputs.devices.push_back({"AA", 1, "", ""});
    const AppConfig config = configWith("", given);
    EXPECT_EQ(config.mappings.hidEventMapPath, "");
    EXPECT_EQ(config.outputs.debounceMs, 50);
    EXPECT_EQ(config.outputs.profiles.count("OLD"), 0U);
    EXPECT_TRUE(config.outputs.roleProfiles.empty());
    EXPECT_TRUE(config.outputs.devices.empty());
}

TEST(AppConfig, WritesTheHidSectionOnlyOnceTheMappingsAreRead) {
    AppConfig config;
    config.hid.vid = "old";
    std::string error;
    EXPECT_FALSE(parseAppConfig(R"({"hid":{"vid":"new","pid":"2"}})", "config.json", config, error));
    EXPECT_EQ(config.hid.vid, "old");
    EXPECT_FALSE(parseAppConfig(ConfigSamples::appConfig("\"devices\":1"), "config.json", config, error));
    EXPECT_EQ(config.hid.vid, "0x1234");
}

TEST(AppConfigValidation, AcceptsAndRefusesAtItsLimits) {
    // The times of a disabled client count, its channels don't.
    const std::pair<const char*, std::vector<const char*>> cases[] = {
        {"mobiflight.rpnRateLimitMs must be >= 0",
         {R"("mobiflight":{"rpnRateLimitMs":-1})", R"("mobiflight":{"rpnRateLimitMs":1e10})",
          R"("mobiflight":{"enabled":0,"rpnRateLimitMs":-1})"}},
        {"mobiflight.mapHoldRepeatMs must be > 0",
         {R"("mobiflight":{"mapHoldRepeatMs":0})", R"("mobiflight":{"enabled":0,"mapHoldRepeatMs":0.9})"}},
        {"",
         {R"("mobiflight":{"rpnRateLimitMs":-0.9})", R"("mobiflight":{"mapHoldRepeatMs":1})",
          R"("mobiflight":{"enabled":0,"commandChannel":"","responseChannel":"","lvarsChannel":""})"}},
        {"cdc.comPort is required when cdc.enabled=1",
         {R"("cdc":{"enabled":1})", R"("cdc":{"enabled":1,"comPort":3})"}},
        {"", {R"("cdc":{"enabled":0})", R"("outputs":{"debounceMs":0})"}},
        {"extensions.batteryIndex must be 1 to 16",
         {R"("extensions":{"batteryIndex":-1})", R"("extensions":{"batteryIndex":0})",
          R"("extensions":{"batteryIndex":17})"}},
        {"", {R"("extensions":{"batteryIndex":1})", R"("extensions":{"batteryIndex":16})"}},
    };
    for (const auto& [error, rows] : cases) {
        for (const char* members : rows) {
            EXPECT_EQ(errorWith(members), error) << members;
        }
    }
}

TEST(AppConfigValidation, RefusesALightVariableThatNoCommandCanCarry) {
    const auto errorOfLength = [](std::size_t length) {
        return errorWith(R"("extensions":{"lightVariable":")" + std::string(length, 'x') + "\"}");
    };
    EXPECT_EQ(errorOfLength(0), "extensions.lightVariable must not be empty");
    EXPECT_EQ(errorOfLength(240), "");
    EXPECT_EQ(errorOfLength(241), "extensions.lightVariable must not be longer than 240 characters");
}

TEST(AppConfigValidation, ChecksInItsFixedOrder) {
    AppConfig config;
    config.mobiflight = {true, "", "", "", "", -1, 0};
    config.cdc.enabled = true;
    config.outputs.debounceMs = -1;
    config.outputs.profiles["P"].backlight.scale = 0.0;
    config.extensions.batteryIndex = 0;
    config.extensions.lightVariable = "";
    const std::pair<const char*, std::function<void()>> steps[] = {
        {"hid.vid is required", [&] { config.hid.vid = "1"; }},
        {"hid.pid is required", [&] { config.hid.pid = "2"; }},
        {"mappings.buttonConfigPath is required", [&] { config.mappings.buttonConfigPath = "b"; }},
        {"mobiflight.rpnRateLimitMs must be >= 0", [&] { config.mobiflight.rpnRateLimitMs = 0; }},
        {"mobiflight.mapHoldRepeatMs must be > 0", [&] { config.mobiflight.mapHoldRepeatMs = 1; }},
        {"mobiflight.commandChannel is required when enabled", [&] { config.mobiflight.commandChannel = "c"; }},
        {"mobiflight.responseChannel is required when enabled", [&] { config.mobiflight.responseChannel = "r"; }},
        {"mobiflight.lvarsChannel is required when enabled", [&] { config.mobiflight.lvarsChannel = "l"; }},
        {"cdc.comPort is required when cdc.enabled=1", [&] { config.cdc.comPort = "COM1"; }},
        {"outputs.debounceMs must be >= 0", [&] { config.outputs.debounceMs = 0; }},
        {"outputs.profiles[P].backlight scale must be > 0", [&] { config.outputs.profiles.clear(); }},
        {"extensions.batteryIndex must be 1 to 16", [&] { config.extensions.batteryIndex = 2; }},
        {"extensions.lightVariable must not be empty", [&] { config.extensions.lightVariable = "L"; }},
    };
    std::string error;
    for (const auto& [expected, fix] : steps) {
        EXPECT_FALSE(validateAppConfig(config, error));
        EXPECT_EQ(error, expected);
        fix();
    }
    error.clear();
    EXPECT_TRUE(validateAppConfig(config, error));
    EXPECT_EQ(error, "");
}

} // namespace
