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

/// `given` overlaid with the smallest configuration and these members.
AppConfig overlaid(const std::string& members, AppConfig given = {}) {
    std::string error;
    EXPECT_TRUE(parseAppConfig(ConfigSamples::appConfig(members), "config.json", given, error)) << error;
    EXPECT_EQ(error, "");
    return given;
}

std::string errorWith(const std::string& members) {
    return errorOf(ConfigSamples::appConfig(members));
}

AppConfig withHid(const std::string& members) {
    AppConfig config;
    std::string error;
    const std::string text = R"({"hid":{"vid":"1","pid":"2",)" + members + R"(},"mappings":{"buttonConfigPath":"b"}})";
    EXPECT_TRUE(parseAppConfig(text, "config.json", config, error)) << error;
    return config;
}

} // namespace

TEST(AppConfigDefaults, AreThoseOfANewRecord) {
    const AppConfig config;
    EXPECT_EQ(config.hid.vid, "");
    EXPECT_EQ(config.hid.pid, "");
    EXPECT_EQ(config.hid.readIntervalMs, 2);
    EXPECT_EQ(config.hid.scanIntervalMs, 1000);
    EXPECT_FALSE(config.hid.trace);
    EXPECT_EQ(config.mappings.buttonConfigPath, "");
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
    EXPECT_FALSE(config.extensions.singlePendingRead);
    EXPECT_FALSE(config.extensions.reopenStoppedReaders);
    EXPECT_FALSE(config.extensions.renewRegistration);
    EXPECT_FALSE(config.extensions.ownChannels);
    EXPECT_FALSE(config.extensions.lvarNumbers);
    EXPECT_EQ(config.extensions.batteryIndex, 2);
    EXPECT_EQ(config.extensions.lightVariable, "(L:LIGHTING_POTENTIOMETER_5)");
}

TEST(AppConfigParse, TheSmallestDocumentLoadsWithTheDefaults) {
    const AppConfig config = overlaid("");
    EXPECT_EQ(config.hid.vid, "0x1234");
    EXPECT_EQ(config.hid.pid, "ABCD");
    EXPECT_EQ(config.hid.scanIntervalMs, 1000);
    EXPECT_EQ(config.mappings.buttonConfigPath, "buttons.json");
    EXPECT_EQ(config.mappings.hidEventMapPath, "");
    EXPECT_TRUE(config.mobiflight.enabled);
    EXPECT_EQ(config.outputs.defaultProfile, "default");
    EXPECT_EQ(config.outputs.profiles.size(), 1U);
}

TEST(AppConfigParse, ReadsEverySetting) {
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

TEST(AppConfigParse, PutsItsPrefixBeforeAParseError) {
    EXPECT_EQ(errorOf(""), "Config parse error: Unexpected end of input");
    EXPECT_EQ(errorOf("{} x"), "Config parse error: Unexpected trailing characters");
    EXPECT_EQ(errorOf(std::string(2000, '[')), "Config parse error: Nesting too deep");
}

TEST(AppConfigParse, RefusesARootThatIsNoObject) {
    EXPECT_EQ(errorOf("[]"), "Config root must be an object");
    EXPECT_EQ(errorOf("null"), "Config root must be an object");
}

TEST(AppConfigParse, RefusesAMissingHidSection) {
    EXPECT_EQ(errorOf("{}"), "Missing 'hid' section");
    EXPECT_EQ(errorOf(R"({"hid":[]})"), "Missing 'hid' section");
    EXPECT_EQ(errorOf(R"({"HID":{"vid":"1","pid":"2"}})"), "Missing 'hid' section");
}

TEST(AppConfigParse, RefusesAVidThatIsNoString) {
    EXPECT_EQ(errorOf(R"({"hid":{}})"), "Missing or invalid 'hid.vid'");
    EXPECT_EQ(errorOf(R"({"hid":{"vid":4660,"pid":"2"}})"), "Missing or invalid 'hid.vid'");
    EXPECT_EQ(errorOf(R"({"hid":{"Vid":"1","pid":"2"}})"), "Missing or invalid 'hid.vid'");
}

TEST(AppConfigParse, RefusesAPidThatIsNoString) {
    EXPECT_EQ(errorOf(R"({"hid":{"vid":"1"}})"), "Missing or invalid 'hid.pid'");
    EXPECT_EQ(errorOf(R"({"hid":{"vid":"","pid":null}})"), "Missing or invalid 'hid.pid'");
}

TEST(AppConfigParse, RefusesAMissingMappingsSection) {
    EXPECT_EQ(errorOf(R"({"hid":{"vid":"1","pid":"2"}})"), "Missing 'mappings' section");
    EXPECT_EQ(errorOf(R"({"hid":{"vid":"1","pid":"2"},"mappings":"b"})"), "Missing 'mappings' section");
}

TEST(AppConfigParse, RefusesAButtonConfigPathThatIsNoString) {
    const std::string hid = R"({"hid":{"vid":"1","pid":"2"},"mappings":)";
    EXPECT_EQ(errorOf(hid + "{}}"), "Missing or invalid 'mappings.buttonConfigPath'");
    EXPECT_EQ(errorOf(hid + R"({"buttonConfigPath":1}})"), "Missing or invalid 'mappings.buttonConfigPath'");
}

TEST(AppConfigParse, TellsTheFirstOfSeveralFaults) {
    EXPECT_EQ(errorOf(R"({"hid":{"vid":"","pid":""},"mappings":{}})"),
              "Missing or invalid 'mappings.buttonConfigPath'");
    EXPECT_EQ(errorOf(R"({"hid":{"vid":"","pid":""},"mappings":{"buttonConfigPath":""},"devices":1})"),
              "'devices' must be an array");
}

TEST(AppConfigParse, TakesNumbersOnlyFromNumbers) {
    const AppConfig config = withHid(R"("readIntervalMs":"7","scanIntervalMs":null,"trace":true)");
    EXPECT_EQ(config.hid.readIntervalMs, 2);
    EXPECT_EQ(config.hid.scanIntervalMs, 1000);
    EXPECT_FALSE(config.hid.trace);
}

TEST(AppConfigParse, TruncatesNumbersTowardZero) {
    const AppConfig config = withHid(R"("readIntervalMs":-7.9,"scanIntervalMs":2147483647.5)");
    EXPECT_EQ(config.hid.readIntervalMs, -7);
    EXPECT_EQ(config.hid.scanIntervalMs, 2147483647);
}

TEST(AppConfigParse, DoesNotCheckTheHidIntervals) {
    const AppConfig config = withHid(R"("readIntervalMs":1e99,"scanIntervalMs":0)");
    EXPECT_EQ(config.hid.readIntervalMs, -2147483647 - 1);
    EXPECT_EQ(config.hid.scanIntervalMs, 0);
}

TEST(AppConfigParse, ASwitchIsOnForAnyWholeNumberButZero) {
    EXPECT_TRUE(withHid("\"trace\":1").hid.trace);
    EXPECT_TRUE(withHid("\"trace\":-3.5").hid.trace);
    EXPECT_TRUE(withHid("\"trace\":1e10").hid.trace);
    EXPECT_FALSE(withHid("\"trace\":0").hid.trace);
    EXPECT_FALSE(withHid("\"trace\":0.5").hid.trace);
    EXPECT_FALSE(withHid("\"trace\":-0.9").hid.trace);
}

TEST(AppConfigParse, ASwitchDoesNotHonourBooleans) {
    EXPECT_TRUE(overlaid(R"("mobiflight":{"enabled":false})").mobiflight.enabled);
    EXPECT_FALSE(overlaid(R"("cdc":{"enabled":true})").cdc.enabled);
    EXPECT_FALSE(overlaid(R"("logging":{"debug":true})").logging.debug);
    EXPECT_FALSE(overlaid(R"("logging":{"debug":"1"})").logging.debug);
}

TEST(AppConfigParse, NullLeavesAChannelsDefault) {
    const AppConfig config = overlaid(R"("mobiflight":{"commandChannel":null,"lvarsChannel":5})");
    EXPECT_EQ(config.mobiflight.commandChannel, "MobiFlight.Command");
    EXPECT_EQ(config.mobiflight.lvarsChannel, "MobiFlight.LVars");
}

TEST(AppConfigParse, AnEmptyClientNamePasses) {
    EXPECT_EQ(overlaid(R"("mobiflight":{"clientName":""})").mobiflight.clientName, "");
}

TEST(AppConfigParse, IgnoresOptionalSectionsOfAnotherKind) {
    const AppConfig config = overlaid(R"("mobiflight":[0],"cdc":1,"logging":"on","outputs":null)");
    EXPECT_TRUE(config.mobiflight.enabled);
    EXPECT_FALSE(config.cdc.enabled);
    EXPECT_FALSE(config.logging.debug);
    EXPECT_EQ(config.outputs.debounceMs, 50);
}

TEST(AppConfigParse, IgnoresUnknownKeysAtEveryLevel) {
    const AppConfig config = overlaid(R"("$schema":"x","extra":{"a":[1]},"mobiflight":{"Enabled":0,"more":{}})");
    EXPECT_TRUE(config.mobiflight.enabled);
}

TEST(AppConfigParse, KeepsTextByteForByte) {
    const AppConfig config = overlaid("\"mobiflight\":{\"clientName\":\" n\xC3\xA4me \xFF\"}");
    EXPECT_EQ(config.mobiflight.clientName, " n\xC3\xA4me \xFF");
}

TEST(AppConfigParse, TheFirstOfADuplicateSectionCounts) {
    EXPECT_TRUE(overlaid(R"("logging":{"debug":1},"logging":{"debug":0})").logging.debug);
}

TEST(AppConfigOverlay, KeepsWhatTheFileDoesNotGive) {
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

TEST(AppConfigOverlay, StartsTheEventMapPathEmptyAtEachLoad) {
    AppConfig given;
    given.mappings.hidEventMapPath = "old.json";
    EXPECT_EQ(overlaid("", given).mappings.hidEventMapPath, "");
}

TEST(AppConfigOverlay, StartsTheOutputsAfreshAtEachLoad) {
    AppConfig given;
    given.outputs.debounceMs = 99;
    given.outputs.profiles["OLD"] = makeDefaultProfile();
    given.outputs.roleProfiles["PFD"] = "OLD";
    given.outputs.devices.push_back({"AA", 1, "", ""});
    const AppConfig config = overlaid("", given);
    EXPECT_EQ(config.outputs.debounceMs, 50);
    EXPECT_EQ(config.outputs.profiles.count("OLD"), 0U);
    EXPECT_TRUE(config.outputs.roleProfiles.empty());
    EXPECT_TRUE(config.outputs.devices.empty());
}

TEST(AppConfigOverlay, WritesTheHidSectionOnlyOnceTheMappingsAreRead) {
    AppConfig config;
    config.hid.vid = "old";
    std::string error;
    EXPECT_FALSE(parseAppConfig(R"({"hid":{"vid":"new","pid":"2"}})", "config.json", config, error));
    EXPECT_EQ(config.hid.vid, "old");
    EXPECT_FALSE(parseAppConfig(ConfigSamples::appConfig("\"devices\":1"), "config.json", config, error));
    EXPECT_EQ(config.hid.vid, "0x1234");
}

TEST(AppConfigError, StaysAloneOnSuccess) {
    AppConfig config;
    std::string error = "kept";
    EXPECT_TRUE(parseAppConfig(ConfigSamples::appConfig(), "config.json", config, error));
    EXPECT_EQ(error, "kept");
}

TEST(AppConfigValidation, RunsAtTheEndOfAParse) {
    EXPECT_EQ(errorOf(R"({"hid":{"vid":"","pid":"2"},"mappings":{"buttonConfigPath":"b"}})"), "hid.vid is required");
    EXPECT_EQ(errorOf(R"({"hid":{"vid":"1","pid":""},"mappings":{"buttonConfigPath":"b"}})"), "hid.pid is required");
    EXPECT_EQ(errorOf(R"({"hid":{"vid":"1","pid":"2"},"mappings":{"buttonConfigPath":""}})"),
              "mappings.buttonConfigPath is required");
}

TEST(AppConfigValidation, RefusesANegativeRateLimit) {
    EXPECT_EQ(errorWith(R"("mobiflight":{"rpnRateLimitMs":-1})"), "mobiflight.rpnRateLimitMs must be >= 0");
    EXPECT_EQ(errorWith(R"("mobiflight":{"rpnRateLimitMs":1e10})"), "mobiflight.rpnRateLimitMs must be >= 0");
    EXPECT_EQ(errorWith(R"("mobiflight":{"rpnRateLimitMs":-0.9})"), "");
}

TEST(AppConfigValidation, RefusesAHoldRepeatThatIsNotPositive) {
    EXPECT_EQ(errorWith(R"("mobiflight":{"mapHoldRepeatMs":0})"), "mobiflight.mapHoldRepeatMs must be > 0");
    EXPECT_EQ(errorWith(R"("mobiflight":{"mapHoldRepeatMs":0.9})"), "mobiflight.mapHoldRepeatMs must be > 0");
    EXPECT_EQ(errorWith(R"("mobiflight":{"mapHoldRepeatMs":1})"), "");
}

TEST(AppConfigValidation, ChecksTheTimesOfADisabledClientToo) {
    EXPECT_EQ(errorWith(R"("mobiflight":{"enabled":0,"mapHoldRepeatMs":0.9})"),
              "mobiflight.mapHoldRepeatMs must be > 0");
    EXPECT_EQ(errorWith(R"("mobiflight":{"enabled":0,"rpnRateLimitMs":-1})"), "mobiflight.rpnRateLimitMs must be >= 0");
}

TEST(AppConfigValidation, AnEnabledClientNeedsItsChannels) {
    EXPECT_EQ(errorWith(R"("mobiflight":{"commandChannel":""})"), "mobiflight.commandChannel is required when enabled");
    EXPECT_EQ(errorWith(R"("mobiflight":{"responseChannel":""})"),
              "mobiflight.responseChannel is required when enabled");
    EXPECT_EQ(errorWith(R"("mobiflight":{"lvarsChannel":""})"), "mobiflight.lvarsChannel is required when enabled");
}

TEST(AppConfigValidation, ADisabledClientNeedsNoChannels) {
    const AppConfig config =
        overlaid(R"("mobiflight":{"enabled":0,"commandChannel":"","responseChannel":"","lvarsChannel":""})");
    EXPECT_EQ(config.mobiflight.commandChannel, "");
}

TEST(AppConfigValidation, AnEnabledCdcLinkNeedsItsPort) {
    EXPECT_EQ(errorWith(R"("cdc":{"enabled":1})"), "cdc.comPort is required when cdc.enabled=1");
    EXPECT_EQ(errorWith(R"("cdc":{"enabled":1,"comPort":3})"), "cdc.comPort is required when cdc.enabled=1");
    EXPECT_EQ(errorWith(R"("cdc":{"enabled":0})"), "");
}

TEST(AppConfigValidation, RefusesANegativeDebounce) {
    EXPECT_EQ(errorWith(R"("outputs":{"debounceMs":-1})"), "outputs.debounceMs must be >= 0");
    EXPECT_EQ(errorWith(R"("outputs":{"debounceMs":0})"), "");
}

TEST(AppConfigValidation, AcceptsBatteriesFrom1To16) {
    for (const int index : {1, 16}) {
        EXPECT_EQ(errorWith(R"("extensions":{"batteryIndex":)" + std::to_string(index) + "}"), "");
    }
    for (const int index : {-1, 0, 17}) {
        EXPECT_EQ(errorWith(R"("extensions":{"batteryIndex":)" + std::to_string(index) + "}"),
                  "extensions.batteryIndex must be 1 to 16");
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
