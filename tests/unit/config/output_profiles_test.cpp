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

/// The error of a profile "Night" with this backlight.
std::string backlightError(const std::string& backlight) {
    return errorWith(R"("outputs":{"profiles":{"Night":{"backlight":)" + backlight + "}}}");
}

} // namespace

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

TEST(BacklightParse, ReadsEveryKey) {
    const BacklightProfile backlight = parseBacklightProfile(
        parsed(R"({"mode":" fixed ","min":1.9,"max":99,"default":20,"value":30,"scale":0.5})"), {});
    EXPECT_EQ(backlight.mode, "FIXED");
    EXPECT_EQ(backlight.min, 1);
    EXPECT_EQ(backlight.max, 99);
    EXPECT_EQ(backlight.defaultValue, 20);
    EXPECT_EQ(backlight.value, 30);
    EXPECT_EQ(backlight.scale, 0.5);
}

TEST(BacklightParse, KeepsTheBaseForWhatIsMissingOrOfAnotherKind) {
    const BacklightProfile base{"BASE", 1, 2, 3, 4, 5.5};
    const BacklightProfile backlight = parseBacklightProfile(
        parsed(R"({"mode":1,"min":"1","max":null,"defaultValue":9,"value":[],"scale":"2"})"), base);
    EXPECT_EQ(backlight.mode, "BASE");
    EXPECT_EQ(backlight.min, 1);
    EXPECT_EQ(backlight.max, 2);
    EXPECT_EQ(backlight.defaultValue, 3);
    EXPECT_EQ(backlight.value, 4);
    EXPECT_EQ(backlight.scale, 5.5);
}

TEST(BacklightParse, StoresAnEmptyMode) {
    EXPECT_EQ(parseBacklightProfile(parsed(R"({"mode":"  "})"), {}).mode, "");
}

TEST(LedEffectParse, ReadsEveryKey) {
    const LedEffect effect =
        parseLedEffect(parsed(R"({"effect":" fl ash ","brightness":1,"param0":2,"param1":3.9,"param2":-4})"), {});
    EXPECT_EQ(effect.effect, "FLASH");
    EXPECT_EQ(effect.brightness, 1);
    EXPECT_EQ(effect.param0, 2);
    EXPECT_EQ(effect.param1, 3);
    EXPECT_EQ(effect.param2, -4);
}

TEST(LedEffectParse, TheSecondNamesWin) {
    const LedEffect effect =
        parseLedEffect(parsed(R"({"count":7,"param0":3,"periodMs":8,"param1":4,"level":9,"param2":5})"), {});
    EXPECT_EQ(effect.param0, 7);
    EXPECT_EQ(effect.param1, 8);
    EXPECT_EQ(effect.param2, 9);
}

TEST(LedEffectParse, ASecondNameOfAnotherKindDoesNotWin) {
    EXPECT_EQ(parseLedEffect(parsed(R"({"param0":3,"count":"7"})"), {}).param0, 3);
}

TEST(LedEffectParse, KeepsTheBaseForWhatIsMissingOrOfAnotherKind) {
    const LedEffect effect = parseLedEffect(parsed(R"({"effect":null,"brightness":"x"})"), {"base", 1, 2, 3, 4});
    EXPECT_EQ(effect.effect, "base");
    EXPECT_EQ(effect.brightness, 1);
    EXPECT_EQ(effect.param0, 2);
    EXPECT_EQ(effect.param1, 3);
    EXPECT_EQ(effect.param2, 4);
}

TEST(LedEffectParse, StoresAnEmptyEffect) {
    EXPECT_EQ(parseLedEffect(parsed(R"({"effect":" "})"), {"base", 0, 0, 0, 0}).effect, "");
}

TEST(EffectName, KnowsFourNamesInAnyCaseAndSpacing) {
    for (const char* name : {"OFF", "steady", "Breathe", " f l a s h "}) {
        EXPECT_TRUE(isValidEffectName(name)) << name;
    }
}

TEST(EffectName, RefusesAnythingElse) {
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

TEST(ProfileValidation, RefusesBadBounds) {
    const std::string message = "outputs.profiles[NIGHT].backlight min/max must be between 0-100";
    EXPECT_EQ(backlightError(R"({"min":50,"max":40})"), message);
    EXPECT_EQ(backlightError(R"({"min":-1})"), message);
    EXPECT_EQ(backlightError(R"({"max":101})"), message);
    EXPECT_EQ(backlightError(R"({"min":1e10})"), message);
    EXPECT_EQ(backlightError(R"({"min":40,"max":40})"), "");
    EXPECT_EQ(backlightError(R"({"min":-0.9,"max":100.9})"), "");
}

TEST(ProfileValidation, RefusesABadDefaultLevel) {
    const std::string message = "outputs.profiles[NIGHT].backlight default must be between 0-100";
    EXPECT_EQ(backlightError(R"({"default":-1})"), message);
    EXPECT_EQ(backlightError(R"({"default":101})"), message);
    EXPECT_EQ(backlightError(R"({"default":100})"), "");
    EXPECT_EQ(backlightError(R"({"min":90,"default":0})"), "");
}

TEST(ProfileValidation, RefusesABadFixedLevel) {
    const std::string message = "outputs.profiles[NIGHT].backlight value must be between 0-100";
    EXPECT_EQ(backlightError(R"({"value":-1})"), message);
    EXPECT_EQ(backlightError(R"({"value":101})"), message);
    EXPECT_EQ(backlightError(R"({"value":0})"), "");
}

TEST(ProfileValidation, RefusesAScaleThatIsNotPositive) {
    const std::string message = "outputs.profiles[NIGHT].backlight scale must be > 0";
    EXPECT_EQ(backlightError(R"({"scale":0})"), message);
    EXPECT_EQ(backlightError(R"({"scale":-0.5})"), message);
    EXPECT_EQ(backlightError(R"({"scale":0.0001})"), "");
    EXPECT_EQ(backlightError(R"({"scale":1e999})"), "");
}

TEST(ProfileValidation, KeepsTheFractionOfTheScale) {
    EXPECT_EQ(outputsWith(R"({"profiles":{"a":{"backlight":{"scale":0.5}}}})").profiles.at("A").backlight.scale, 0.5);
}

TEST(ProfileValidation, RefusesUnknownEffectsBySection) {
    EXPECT_EQ(errorWith(R"("outputs":{"profiles":{"a":{"simDisconnected":{"effect":"blink"}}}})"),
              "outputs.profiles[A].simDisconnected.effect is invalid");
    EXPECT_EQ(errorWith(R"("outputs":{"profiles":{"a":{"batteryOff":{"effect":"blink"}}}})"),
              "outputs.profiles[A].batteryOff.effect is invalid");
}

TEST(ProfileValidation, AcceptsKnownAndEmptyEffects) {
    EXPECT_EQ(outputsWith(R"({"profiles":{"a":{"simDisconnected":{"effect":" flash "}}}})")
                  .profiles.at("A")
                  .simDisconnected.effect,
              "FLASH");
    EXPECT_EQ(
        errorWith(R"("outputs":{"profiles":{"a":{"simDisconnected":{"effect":""},"batteryOff":{"effect":" "}}}})"), "");
}

TEST(ProfileValidation, DoesNotCheckModeBrightnessOrParameters) {
    EXPECT_EQ(backlightError(R"({"mode":"anything"})"), "");
    EXPECT_EQ(errorWith(R"("outputs":{"profiles":{"a":{"batteryOff":{"brightness":-5,"count":1e10,"level":999}}}})"),
              "");
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
