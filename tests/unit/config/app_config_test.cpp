#include "config/app_config.h"

#include "tests/support/config_samples.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

/// Through a bare file name, so that no other file plays a part.
std::string errorOf(std::string_view text) {
    AppConfig config;
    std::string error;
    const bool loaded = parseAppConfig(text, "config.json", config, error);
    EXPECT_EQ(loaded, error.empty()) << text;
    return error;
}

/// Of the smallest configuration with these members.
std::string errorWith(const std::string& members) {
    return errorOf(ConfigSamples::appConfig(members));
}

/// `given` overlaid with the smallest configuration and these members.
AppConfig overlaid(const std::string& members, AppConfig given = {}) {
    std::string error = "kept";
    EXPECT_TRUE(parseAppConfig(ConfigSamples::appConfig(members), "config.json", given, error)) << error;
    EXPECT_EQ(error, "kept");
    return given;
}

AppConfig withHid(const std::string& members) {
    AppConfig config;
    std::string error;
    const std::string text = R"({"hid":{"vid":"1","pid":"2",)" + members + R"(},"mappings":{"buttonConfigPath":"b"}})";
    EXPECT_TRUE(parseAppConfig(text, "config.json", config, error)) << error;
    return config;
}

TEST(AppConfig, HasItsDefaultsWhereTheFileSaysNothing) {
    const AppConfig config = overlaid("");
    EXPECT_EQ(config.hid.vid, "0x1234");
    EXPECT_EQ(config.hid.pid, "ABCD");
    EXPECT_EQ(config.hid.readIntervalMs, 2);
    EXPECT_EQ(config.hid.scanIntervalMs, 1000);
    EXPECT_FALSE(config.hid.trace);
    EXPECT_EQ(config.mappings.buttonConfigPath, "buttons.json");
    EXPECT_EQ(config.mappings.hidEventMapPath, "");
    EXPECT_TRUE(config.mobiflight.enabled);
    EXPECT_EQ(config.mobiflight.clientName, "VantrelBridgeHID");
    EXPECT_EQ(config.mobiflight.commandChannel, "MobiFlight.Command");
    EXPECT_EQ(config.mobiflight.responseChannel, "MobiFlight.Response");
    EXPECT_EQ(config.mobiflight.lvarsChannel, "MobiFlight.LVars");
    EXPECT_EQ(config.mobiflight.rpnRateLimitMs, 0);
    EXPECT_EQ(config.mobiflight.mapHoldRepeatMs, 10);
    EXPECT_FALSE(config.cdc.enabled);
    EXPECT_EQ(config.cdc.comPort, "");
    EXPECT_FALSE(config.logging.debug);
    EXPECT_EQ(config.outputs.defaultProfile, "default");
    EXPECT_EQ(config.outputs.profiles.size(), 1U);
    EXPECT_FALSE(config.extensions.singlePendingRead);
    EXPECT_FALSE(config.extensions.reopenStoppedReaders);
    EXPECT_FALSE(config.extensions.renewRegistration);
    EXPECT_FALSE(config.extensions.ownChannels);
    EXPECT_FALSE(config.extensions.lvarNumbers);
    EXPECT_EQ(config.extensions.batteryIndex, 2);
    EXPECT_EQ(config.extensions.lightVariable, "(L:LIGHTING_POTENTIOMETER_5)");
}

TEST(AppConfig, ReadsEverySetting) {
    AppConfig config;
    std::string error;
    ASSERT_TRUE(parseAppConfig(R"json({
        "hid": {"vid": "0xCAFE", "pid": "BEEF", "readIntervalMs": 5, "scanIntervalMs": 250, "trace": 1},
        "mappings": {"buttonConfigPath": "b.json", "hidEventMapPath": "map.json"},
        "mobiflight": {"enabled": 0, "clientName": "Name", "commandChannel": "C", "responseChannel": "R",
                       "lvarsChannel": "L", "rpnRateLimitMs": 30, "mapHoldRepeatMs": 20},
        "cdc": {"enabled": 1, "comPort": "COM3"},
        "logging": {"debug": 1},
        "extensions": {"singlePendingRead": 1, "reopenStoppedReaders": 1, "renewRegistration": 1, "ownChannels": 1,
                       "lvarNumbers": 1, "batteryIndex": 1,
                       "lightVariable": "(A:LIGHT POTENTIOMETER:3, percent over 100)"}})json",
                               "config.json", config, error))
        << error;
    EXPECT_EQ(config.hid.vid, "0xCAFE");
    EXPECT_EQ(config.hid.pid, "BEEF");
    EXPECT_EQ(config.hid.readIntervalMs, 5);
    EXPECT_EQ(config.hid.scanIntervalMs, 250);
    EXPECT_TRUE(config.hid.trace);
    EXPECT_EQ(config.mappings.buttonConfigPath, "b.json");
    EXPECT_EQ(config.mappings.hidEventMapPath, "map.json");
    EXPECT_FALSE(config.mobiflight.enabled);
    EXPECT_EQ(config.mobiflight.clientName, "Name");
    EXPECT_EQ(config.mobiflight.commandChannel, "C");
    EXPECT_EQ(config.mobiflight.responseChannel, "R");
    EXPECT_EQ(config.mobiflight.lvarsChannel, "L");
    EXPECT_EQ(config.mobiflight.rpnRateLimitMs, 30);
    EXPECT_EQ(config.mobiflight.mapHoldRepeatMs, 20);
    EXPECT_TRUE(config.cdc.enabled);
    EXPECT_EQ(config.cdc.comPort, "COM3");
    EXPECT_TRUE(config.logging.debug);
    EXPECT_TRUE(config.extensions.singlePendingRead);
    EXPECT_TRUE(config.extensions.reopenStoppedReaders);
    EXPECT_TRUE(config.extensions.renewRegistration);
    EXPECT_TRUE(config.extensions.ownChannels);
    EXPECT_TRUE(config.extensions.lvarNumbers);
    EXPECT_EQ(config.extensions.batteryIndex, 1);
    EXPECT_EQ(config.extensions.lightVariable, "(A:LIGHT POTENTIOMETER:3, percent over 100)");
}

TEST(AppConfig, RefusesADocumentByItsFirstFault) {
    const std::string hid = R"({"hid":{"vid":"1","pid":"2"})";
    const struct {
        std::string text;
        const char* error;
    } cases[] = {
        {"{} x", "Config parse error: Unexpected trailing characters"},
        {"[]", "Config root must be an object"},
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
    for (const auto& each : cases) {
        EXPECT_EQ(errorOf(each.text), each.error) << each.text;
    }
}

TEST(AppConfig, TakesNumbersOnlyFromNumbersAndTruncatesThem) {
    const AppConfig config = withHid(R"("readIntervalMs":"7","scanIntervalMs":null,"trace":true)");
    EXPECT_EQ(config.hid.readIntervalMs, 2);
    EXPECT_EQ(config.hid.scanIntervalMs, 1000);
    EXPECT_FALSE(config.hid.trace);
    EXPECT_EQ(withHid(R"("readIntervalMs":-7.9)").hid.readIntervalMs, -7);
    EXPECT_EQ(withHid(R"("scanIntervalMs":2147483647.5)").hid.scanIntervalMs, 2147483647);
    EXPECT_EQ(withHid(R"("readIntervalMs":1e99)").hid.readIntervalMs, -2147483647 - 1);
}

TEST(AppConfig, SwitchesOnForAnyWholeNumberButZeroAndIgnoresBooleans) {
    for (const char* on : {"1", "-3.5", "1e10"}) {
        EXPECT_TRUE(withHid(std::string("\"trace\":") + on).hid.trace) << on;
    }
    for (const char* off : {"0", "0.5", "-0.9", "true", "\"1\""}) {
        EXPECT_FALSE(withHid(std::string("\"trace\":") + off).hid.trace) << off;
    }
    EXPECT_TRUE(overlaid(R"("mobiflight":{"enabled":false})").mobiflight.enabled);
    EXPECT_FALSE(overlaid(R"("cdc":{"enabled":true})").cdc.enabled);
    EXPECT_FALSE(overlaid(R"("logging":{"debug":true})").logging.debug);
}

TEST(AppConfig, IgnoresSectionsAndMembersOfAnotherTypeAndUnknownKeys) {
    const AppConfig config =
        overlaid(R"("$schema":"x","extra":{"a":[1]},"cdc":1,"logging":"on","outputs":null,"extensions":[],
                 "mobiflight":{"Enabled":0,"more":{},"commandChannel":null,"lvarsChannel":5})");
    EXPECT_TRUE(config.mobiflight.enabled);
    EXPECT_EQ(config.mobiflight.commandChannel, "MobiFlight.Command");
    EXPECT_EQ(config.mobiflight.lvarsChannel, "MobiFlight.LVars");
    EXPECT_FALSE(config.cdc.enabled);
    EXPECT_FALSE(config.logging.debug);
    EXPECT_EQ(config.outputs.debounceMs, 50);
    EXPECT_TRUE(overlaid(R"("mobiflight":[0])").mobiflight.enabled);
}

TEST(AppConfig, KeepsTextByteForByte) {
    EXPECT_EQ(overlaid("\"mobiflight\":{\"clientName\":\" n\xC3\xA4me \xFF\"}").mobiflight.clientName,
              " n\xC3\xA4me \xFF");
    EXPECT_EQ(overlaid(R"("mobiflight":{"clientName":""})").mobiflight.clientName, "");
}

TEST(AppConfig, KeepsWhatTheFileDoesNotGive) {
    AppConfig given;
    given.hid.readIntervalMs = 11;
    given.hid.scanIntervalMs = 12;
    given.hid.trace = true;
    given.mobiflight.enabled = false;
    given.mobiflight.clientName = "Given";
    given.mobiflight.rpnRateLimitMs = 13;
    given.mobiflight.mapHoldRepeatMs = 14;
    given.cdc = {true, "COM9"};
    given.logging.debug = true;
    const AppConfig config = overlaid(R"("mobiflight":{"rpnRateLimitMs":1},"cdc":{},"logging":{"debug":true})", given);
    EXPECT_EQ(config.hid.readIntervalMs, 11);
    EXPECT_EQ(config.hid.scanIntervalMs, 12);
    EXPECT_TRUE(config.hid.trace);
    EXPECT_FALSE(config.mobiflight.enabled);
    EXPECT_EQ(config.mobiflight.clientName, "Given");
    EXPECT_EQ(config.mobiflight.rpnRateLimitMs, 1);
    EXPECT_EQ(config.mobiflight.mapHoldRepeatMs, 14);
    EXPECT_TRUE(config.cdc.enabled);
    EXPECT_EQ(config.cdc.comPort, "COM9");
    EXPECT_TRUE(config.logging.debug);
}

TEST(AppConfig, ForgetsTheEventMapPathAndTheOutputsAtEachLoad) {
    AppConfig given;
    given.mappings.hidEventMapPath = "old.json";
    given.outputs.debounceMs = 99;
    given.outputs.profiles["OLD"] = makeDefaultProfile();
    given.outputs.roleProfiles["PFD"] = "OLD";
    given.outputs.devices.push_back({"AA", 1, "", ""});
    const AppConfig config = overlaid("", given);
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
    const std::string noError;
    const std::string rate = "mobiflight.rpnRateLimitMs must be >= 0";
    const std::string repeat = "mobiflight.mapHoldRepeatMs must be > 0";
    const std::string battery = "extensions.batteryIndex must be 1 to 16";
    const std::string port = "cdc.comPort is required when cdc.enabled=1";
    const struct {
        const char* members;
        const std::string& error;
    } cases[] = {
        {R"("mobiflight":{"rpnRateLimitMs":-1})", rate},
        {R"("mobiflight":{"rpnRateLimitMs":1e10})", rate},
        {R"("mobiflight":{"rpnRateLimitMs":-0.9})", noError},
        {R"("mobiflight":{"mapHoldRepeatMs":0})", repeat},
        {R"("mobiflight":{"mapHoldRepeatMs":0.9})", repeat},
        {R"("mobiflight":{"mapHoldRepeatMs":1})", noError},
        // The times of a disabled client count, its channels don't.
        {R"("mobiflight":{"enabled":0,"mapHoldRepeatMs":0.9})", repeat},
        {R"("mobiflight":{"enabled":0,"rpnRateLimitMs":-1})", rate},
        {R"("mobiflight":{"enabled":0,"commandChannel":"","responseChannel":"","lvarsChannel":""})", noError},
        {R"("cdc":{"enabled":1})", port},
        {R"("cdc":{"enabled":1,"comPort":3})", port},
        {R"("cdc":{"enabled":0})", noError},
        {R"("outputs":{"debounceMs":0})", noError},
        {R"("extensions":{"batteryIndex":-1})", battery},
        {R"("extensions":{"batteryIndex":0})", battery},
        {R"("extensions":{"batteryIndex":1})", noError},
        {R"("extensions":{"batteryIndex":16})", noError},
        {R"("extensions":{"batteryIndex":17})", battery},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(errorWith(each.members), each.error) << each.members;
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
    std::string error;
    const auto next = [&] {
        EXPECT_FALSE(validateAppConfig(config, error));
        return error;
    };
    EXPECT_EQ(next(), "hid.vid is required");
    config.hid.vid = "1";
    EXPECT_EQ(next(), "hid.pid is required");
    config.hid.pid = "2";
    EXPECT_EQ(next(), "mappings.buttonConfigPath is required");
    config.mappings.buttonConfigPath = "b";
    EXPECT_EQ(next(), "mobiflight.rpnRateLimitMs must be >= 0");
    config.mobiflight.rpnRateLimitMs = 0;
    EXPECT_EQ(next(), "mobiflight.mapHoldRepeatMs must be > 0");
    config.mobiflight.mapHoldRepeatMs = 1;
    EXPECT_EQ(next(), "mobiflight.commandChannel is required when enabled");
    config.mobiflight.commandChannel = "c";
    EXPECT_EQ(next(), "mobiflight.responseChannel is required when enabled");
    config.mobiflight.responseChannel = "r";
    EXPECT_EQ(next(), "mobiflight.lvarsChannel is required when enabled");
    config.mobiflight.lvarsChannel = "l";
    EXPECT_EQ(next(), "cdc.comPort is required when cdc.enabled=1");
    config.cdc.comPort = "COM1";
    EXPECT_EQ(next(), "outputs.debounceMs must be >= 0");
    config.outputs.debounceMs = 0;
    EXPECT_EQ(next(), "outputs.profiles[P].backlight scale must be > 0");
    config.outputs.profiles["P"].backlight.scale = 1.0;
    EXPECT_EQ(next(), "extensions.batteryIndex must be 1 to 16");
    config.extensions.batteryIndex = 2;
    error.clear();
    EXPECT_TRUE(validateAppConfig(config, error));
    EXPECT_EQ(error, "");
}

TEST(AppConfigValidation, RunsAtTheEndOfAParse) {
    EXPECT_EQ(errorOf(R"({"hid":{"vid":"","pid":"2"},"mappings":{"buttonConfigPath":"b"}})"), "hid.vid is required");
}

} // namespace
