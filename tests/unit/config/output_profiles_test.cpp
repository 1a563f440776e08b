#include "config/output_profiles.h"

#include "config/app_config.h"
#include "tests/support/config_samples.h"

#include <gtest/gtest.h>

#include <string>

namespace {

JsonValue parsed(const std::string& text) {
    JsonParseResult result = JsonParser::parse(text);
    EXPECT_TRUE(result.ok) << result.error;
    return result.value;
}

std::string errorWith(const std::string& members) {
    AppConfig config;
    std::string error;
    const bool loaded = parseAppConfig(ConfigSamples::appConfig(members), "config.json", config, error);
    EXPECT_EQ(loaded, error.empty());
    return error;
}

OutputsConfig outputsWith(const std::string& section) {
    AppConfig config;
    std::string error;
    EXPECT_TRUE(parseAppConfig(ConfigSamples::appConfig("\"outputs\":" + section), "config.json", config, error))
        << error;
    return config.outputs;
}

TEST(DefaultProfile, HoldsItsFixedValues) {
    const OutputProfile profile = makeDefaultProfile();
    EXPECT_EQ(profile.backlight.mode, "lvar");
    EXPECT_EQ(profile.backlight.min, 0);
    EXPECT_EQ(profile.backlight.max, 100);
    EXPECT_EQ(profile.backlight.defaultValue, 80);
    EXPECT_EQ(profile.backlight.value, 80);
    EXPECT_EQ(profile.backlight.scale, 1.0);
    EXPECT_EQ(profile.simDisconnected.effect, "flash");
    EXPECT_EQ(profile.simDisconnected.brightness, 0);
    EXPECT_EQ(profile.simDisconnected.param0, 4);
    EXPECT_EQ(profile.simDisconnected.param1, 150);
    EXPECT_EQ(profile.simDisconnected.param2, 100);
    EXPECT_EQ(profile.batteryOff.effect, "breathe");
    EXPECT_EQ(profile.batteryOff.brightness, 0);
    EXPECT_EQ(profile.batteryOff.param0, 5);
    EXPECT_EQ(profile.batteryOff.param1, 1000);
    EXPECT_EQ(profile.batteryOff.param2, 50);
}

TEST(BacklightParse, ReadsEveryKeyAndKeepsTheBaseForTheRest) {
    const BacklightProfile backlight = parseBacklightProfile(
        parsed(R"({"mode":" fixed ","min":1.9,"max":99,"default":20,"value":30,"scale":0.5})"), {});
    EXPECT_EQ(backlight.mode, "FIXED");
    EXPECT_EQ(backlight.min, 1);
    EXPECT_EQ(backlight.max, 99);
    EXPECT_EQ(backlight.defaultValue, 20);
    EXPECT_EQ(backlight.value, 30);
    EXPECT_EQ(backlight.scale, 0.5);
    const BacklightProfile kept =
        parseBacklightProfile(parsed(R"({"mode":1,"min":"1","max":null,"defaultValue":9,"value":[],"scale":"2"})"),
                              {"BASE", 1, 2, 3, 4, 5.5});
    EXPECT_EQ(kept.mode, "BASE");
    EXPECT_EQ(kept.min, 1);
    EXPECT_EQ(kept.max, 2);
    EXPECT_EQ(kept.defaultValue, 3);
    EXPECT_EQ(kept.value, 4);
    EXPECT_EQ(kept.scale, 5.5);
    EXPECT_EQ(parseBacklightProfile(parsed(R"({"mode":"  "})"), {}).mode, "");
}

TEST(LedEffectParse, ReadsEveryKeyAndKeepsTheBaseForTheRest) {
    const struct {
        const char* text;
        LedEffect effect;
    } cases[] = {
        {R"({"effect":" fl ash ","brightness":1,"param0":2,"param1":3.9,"param2":-4})", {"FLASH", 1, 2, 3, -4}},
        {R"({"effect":null,"brightness":"x"})", {"base", 9, 8, 7, 6}},
        {R"({"effect":" "})", {"", 9, 8, 7, 6}},
        // The second name of a parameter wins where it is a number.
        {R"({"count":1,"param0":3,"periodMs":2,"param1":4,"level":3,"param2":5})", {"base", 9, 1, 2, 3}},
        {R"({"param0":3,"count":"7"})", {"base", 9, 3, 7, 6}},
    };
    for (const auto& each : cases) {
        const LedEffect effect = parseLedEffect(parsed(each.text), {"base", 9, 8, 7, 6});
        EXPECT_EQ(effect.effect, each.effect.effect) << each.text;
        EXPECT_EQ(effect.brightness, each.effect.brightness) << each.text;
        EXPECT_EQ(effect.param0, each.effect.param0) << each.text;
        EXPECT_EQ(effect.param1, each.effect.param1) << each.text;
        EXPECT_EQ(effect.param2, each.effect.param2) << each.text;
    }
}

TEST(EffectName, KnowsFourNamesInAnyCaseAndSpacing) {
    for (const char* name : {"OFF", "steady", "Breathe", " f l a s h "}) {
        EXPECT_TRUE(isValidEffectName(name)) << name;
    }
    for (const char* name : {"", " ", "ON", "FLASHES", "OF", "OFF,STEADY"}) {
        EXPECT_FALSE(isValidEffectName(name)) << name;
    }
}

TEST(OutputsParse, StartsFromItsDefaults) {
    const OutputsConfig outputs = parseOutputs(parsed("{}"));
    EXPECT_EQ(outputs.debounceMs, 50);
    EXPECT_EQ(outputs.defaultProfile, "default");
    EXPECT_TRUE(outputs.profiles.empty());
    EXPECT_TRUE(outputs.roleProfiles.empty());
    EXPECT_TRUE(outputs.devices.empty());
}

TEST(OutputsParse, NormalisesTheDefaultProfilesName) {
    EXPECT_EQ(parseOutputs(parsed(R"({"defaultProfile":" night mode "})")).defaultProfile, "NIGHTMODE");
    EXPECT_EQ(parseOutputs(parsed(R"({"defaultProfile":5})")).defaultProfile, "default");
}

TEST(OutputsParse, NormalisesRolesAndTheirProfiles) {
    const OutputsConfig outputs = parseOutputs(parsed(R"({"roleProfiles":{" pfd ":" bright ","Mfd":"nowhere"}})"));
    EXPECT_EQ(outputs.roleProfiles, (std::map<std::string, std::string>{{"PFD", "BRIGHT"}, {"MFD", "NOWHERE"}}));
}

TEST(OutputsParse, SkipsRolesOfAnotherKindOrWithoutAName) {
    const OutputsConfig outputs =
        parseOutputs(parsed(R"({"roleProfiles":{"a":1,"b":null,"c":"  "," ":"x","d":{"e":"f"}}})"));
    EXPECT_TRUE(outputs.roleProfiles.empty());
}

TEST(OutputsParse, OfTwoRolesThatNormaliseAlikeTheLaterKeyCounts) {
    EXPECT_EQ(parseOutputs(parsed(R"({"roleProfiles":{"pfd":"late","PFD":"early"}})")).roleProfiles.at("PFD"), "LATE");
    EXPECT_EQ(parseOutputs(parsed(R"({"roleProfiles":{"pfd":"  ","PFD":"early"}})")).roleProfiles.at("PFD"), "EARLY");
}

TEST(OutputsParse, EachProfileStartsFromTheDefaults) {
    const OutputsConfig outputs = outputsWith(
        R"({"profiles":{"a":{"backlight":{"min":5}},"b":{"batteryOff":{"effect":"off"}},"default":{"backlight":{"max":7}}}})");
    EXPECT_EQ(outputs.profiles.at("A").backlight.min, 5);
    EXPECT_EQ(outputs.profiles.at("A").backlight.max, 100);
    EXPECT_EQ(outputs.profiles.at("A").batteryOff.effect, "breathe");
    EXPECT_EQ(outputs.profiles.at("B").batteryOff.effect, "OFF");
    EXPECT_EQ(outputs.profiles.at("B").batteryOff.param0, 5);
    EXPECT_EQ(outputs.profiles.at("B").backlight.min, 0);
}

TEST(OutputsParse, IgnoresProfilesAndPartsOfAnotherKind) {
    const OutputsConfig outputs =
        outputsWith(R"({"profiles":{"a":[],"b":null,"c":{"backlight":5,"simDisconnected":"off","batteryOff":[]}}})");
    EXPECT_EQ(outputs.profiles.count("A"), 0U);
    EXPECT_EQ(outputs.profiles.count("B"), 0U);
    EXPECT_EQ(outputs.profiles.at("C").backlight.defaultValue, 80);
    EXPECT_EQ(outputs.profiles.at("C").simDisconnected.effect, "flash");
    EXPECT_EQ(outputs.profiles.at("C").batteryOff.effect, "breathe");
}

TEST(OutputsParse, DropsAProfileWithoutAName) {
    const OutputsConfig outputs = parseOutputs(parsed(R"({"profiles":{"":{},"  ":{}}})"));
    EXPECT_TRUE(outputs.profiles.empty());
}

TEST(OutputsParse, OfTwoProfilesThatDifferInCaseTheLaterOneCountsAsAWhole) {
    const OutputsConfig outputs =
        outputsWith(R"({"profiles":{"night":{"backlight":{"min":5}},"NIGHT":{"backlight":{"min":1,"max":50}}}})");
    EXPECT_EQ(outputs.profiles.at("NIGHT").backlight.min, 5);
    EXPECT_EQ(outputs.profiles.at("NIGHT").backlight.max, 100);
    EXPECT_EQ(outputs.profiles.size(), 2U);
}

TEST(OutputsParse, IgnoresProfilesAndRolesThatAreNoObjects) {
    const OutputsConfig outputs = outputsWith(R"({"profiles":[{}],"roleProfiles":"x","debounceMs":"5"})");
    EXPECT_EQ(outputs.profiles.size(), 1U);
    EXPECT_TRUE(outputs.roleProfiles.empty());
    EXPECT_EQ(outputs.debounceMs, 50);
}

TEST(DefaultProfileGuarantee, NoSectionGivesOneProfileAndKeepsTheName) {
    const OutputsConfig outputs = outputsWith("null");
    ASSERT_EQ(outputs.profiles.size(), 1U);
    EXPECT_EQ(outputs.profiles.begin()->first, "DEFAULT");
    EXPECT_EQ(outputs.defaultProfile, "default");
}

TEST(DefaultProfileGuarantee, ABlankNameBecomesDefault) {
    const OutputsConfig outputs = outputsWith(R"({"defaultProfile":"  ","profiles":{"a":{}}})");
    EXPECT_EQ(outputs.defaultProfile, "DEFAULT");
    EXPECT_EQ(outputs.profiles.count("DEFAULT"), 1U);
    EXPECT_EQ(outputs.profiles.size(), 2U);
}

TEST(DefaultProfileGuarantee, MakesAMissingProfileWithAllDefaults) {
    const OutputsConfig outputs =
        outputsWith(R"({"defaultProfile":"night","profiles":{"day":{"backlight":{"min":9}}}})");
    ASSERT_EQ(outputs.profiles.count("NIGHT"), 1U);
    EXPECT_EQ(outputs.profiles.at("NIGHT").backlight.min, 0);
    EXPECT_EQ(outputs.profiles.at("NIGHT").simDisconnected.effect, "flash");
}

TEST(DefaultProfileGuarantee, LeavesAnExistingProfileAlone) {
    const OutputsConfig outputs = outputsWith(R"({"defaultProfile":"day","profiles":{"Day":{"backlight":{"min":9}}}})");
    ASSERT_EQ(outputs.profiles.size(), 1U);
    EXPECT_EQ(outputs.profiles.at("DAY").backlight.min, 9);
}

TEST(ProfileValidation, AcceptsAndRefusesAtItsLimits) {
    const std::string noError;
    const std::string profile = "outputs.profiles[NIGHT].";
    const std::string bounds = profile + "backlight min/max must be between 0-100";
    const std::string defaultLevel = profile + "backlight default must be between 0-100";
    const std::string value = profile + "backlight value must be between 0-100";
    const std::string scale = profile + "backlight scale must be > 0";
    const struct {
        const char* members;
        std::string error;
    } cases[] = {
        {R"("backlight":{"min":50,"max":40})", bounds},
        {R"("backlight":{"min":-1})", bounds},
        {R"("backlight":{"max":101})", bounds},
        {R"("backlight":{"min":1e10})", bounds},
        {R"("backlight":{"min":40,"max":40})", noError},
        {R"("backlight":{"min":-0.9,"max":100.9})", noError},
        {R"("backlight":{"default":-1})", defaultLevel},
        {R"("backlight":{"default":101})", defaultLevel},
        {R"("backlight":{"min":90,"default":0})", noError},
        {R"("backlight":{"default":100})", noError},
        {R"("backlight":{"value":-1})", value},
        {R"("backlight":{"value":101})", value},
        {R"("backlight":{"value":0})", noError},
        {R"("backlight":{"value":100})", noError},
        {R"("backlight":{"scale":0})", scale},
        {R"("backlight":{"scale":-0.5})", scale},
        {R"("backlight":{"scale":0.0001})", noError},
        {R"("backlight":{"scale":1e999})", noError},
        {R"("backlight":{"mode":"anything"})", noError},
        {R"("simDisconnected":{"effect":"blink"})", profile + "simDisconnected.effect is invalid"},
        {R"("batteryOff":{"effect":"blink"})", profile + "batteryOff.effect is invalid"},
        {R"("simDisconnected":{"effect":" flash "},"batteryOff":{"effect":" "})", noError},
        {R"("batteryOff":{"brightness":-5,"count":1e10,"level":999})", noError},
    };
    for (const auto& each : cases) {
        const std::string outputs = std::string(R"("outputs":{"profiles":{"Night":{)") + each.members + "}}}";
        EXPECT_EQ(errorWith(outputs), each.error) << each.members;
    }
}

TEST(ProfileValidation, GoesThroughTheProfilesInKeyOrder) {
    EXPECT_EQ(errorWith(R"("outputs":{"profiles":{"b":{"backlight":{"min":-1}},"a":{"batteryOff":{"effect":"x"}}}})"),
              "outputs.profiles[A].batteryOff.effect is invalid");
}

TEST(ProfileValidation, ChecksInItsFixedOrder) {
    OutputsConfig outputs;
    OutputProfile& profile = outputs.profiles["P"];
    profile.backlight = {"", -1, 100, -1, -1, 0.0};
    profile.simDisconnected.effect = profile.batteryOff.effect = "x";
    std::string error;
    const auto next = [&] {
        EXPECT_FALSE(validateProfiles(outputs, error));
        return error;
    };
    EXPECT_EQ(next(), "outputs.profiles[P].backlight min/max must be between 0-100");
    profile.backlight.min = 0;
    EXPECT_EQ(next(), "outputs.profiles[P].backlight default must be between 0-100");
    profile.backlight.defaultValue = 0;
    EXPECT_EQ(next(), "outputs.profiles[P].backlight value must be between 0-100");
    profile.backlight.value = 0;
    EXPECT_EQ(next(), "outputs.profiles[P].backlight scale must be > 0");
    profile.backlight.scale = 1.0;
    EXPECT_EQ(next(), "outputs.profiles[P].simDisconnected.effect is invalid");
    profile.simDisconnected.effect = "";
    EXPECT_EQ(next(), "outputs.profiles[P].batteryOff.effect is invalid");
    profile.batteryOff.effect = "off";
    EXPECT_TRUE(validateProfiles(outputs, error));
}

} // namespace
