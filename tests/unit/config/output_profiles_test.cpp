#include "config/output_profiles.h"

#include "tests/unit/config/config_texts.h"
#include "tests/unit/config/parsed_config.h"

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

JsonValue jsonOf(const std::string& text) {
    JsonParseResult result = JsonParser::parse(text);
    EXPECT_TRUE(result.ok) << result.error;
    return result.value;
}

OutputsConfig outputsWith(const std::string& section) {
    return configWith("\"outputs\":" + section).outputs;
}

std::string errorOfProfile(const std::string& members) {
    return errorWith(R"("outputs":{"profiles":{"Night":{)" + members + "}}}");
}

TEST(DefaultProfile, HoldsItsFixedValues) {
    EXPECT_EQ(textOf(makeDefaultProfile()), "lvar|0|100|80|80|1| flash|0|4|150|100| breathe|0|5|1000|50|");
}

TEST(BacklightParse, ReadsEveryKeyAndKeepsTheBaseForTheRest) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"mode":" fixed ","min":1.9,"max":99,"default":20,"value":30,"scale":0.5})", "FIXED|1|99|20|30|0.5|"},
        {R"({"mode":1,"min":"1","max":null,"defaultValue":9,"value":[],"scale":"2"})", "BASE|1|2|3|4|5.5|"},
        {R"({"mode":"  "})", "|1|2|3|4|5.5|"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(textOf(parseBacklightProfile(jsonOf(text), {"BASE", 1, 2, 3, 4, 5.5})), expected) << text;
    }
}

TEST(LedEffectParse, ReadsEveryKeyAndKeepsTheBaseForTheRest) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"effect":" fl ash ","brightness":1,"param0":2,"param1":3.9,"param2":-4})", "FLASH|1|2|3|-4|"},
        {R"({"effect":null,"brightness":"x"})", "base|9|8|7|6|"},
        {R"({"effect":" "})", "|9|8|7|6|"},
        // The second name of a parameter wins where it is a number.
        {R"({"count":1,"param0":3,"periodMs":2,"param1":4,"level":3,"param2":5})", "base|9|1|2|3|"},
        {R"({"param0":3,"count":"7"})", "base|9|3|7|6|"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(textOf(parseLedEffect(jsonOf(text), {"base", 9, 8, 7, 6})), expected) << text;
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

TEST(OutputsParse, StartsFromItsDefaultsAndIgnoresWhatIsOfAnotherType) {
    for (const char* section : {"{}", R"({"profiles":[{}],"roleProfiles":"x","debounceMs":"5","defaultProfile":5})"}) {
        const OutputsConfig outputs = parseOutputs(jsonOf(section));
        EXPECT_EQ(outputs.debounceMs, 50);
        EXPECT_EQ(outputs.defaultProfile, "default");
        EXPECT_TRUE(outputs.profiles.empty());
        EXPECT_TRUE(outputs.roleProfiles.empty());
        EXPECT_TRUE(outputs.devices.empty());
    }
    EXPECT_EQ(parseOutputs(jsonOf(R"({"debounceMs":7})")).debounceMs, 7);
}

TEST(OutputsParse, NormalisesRolesAndTheirProfiles) {
    using Profiles = std::map<std::string, std::string>;
    const std::pair<const char*, Profiles> cases[] = {
        {R"({" pfd ":" bright ","Mfd":"nowhere"})", {{"PFD", "BRIGHT"}, {"MFD", "NOWHERE"}}},
        {R"({"a":1,"b":null,"c":"  "," ":"x","d":{"e":"f"}})", {}},
        // Of two roles that normalise alike the later key counts.
        {R"({"pfd":"late","PFD":"early"})", {{"PFD", "LATE"}}},
        {R"({"pfd":"  ","PFD":"early"})", {{"PFD", "EARLY"}}},
    };
    for (const auto& [section, profiles] : cases) {
        const std::string text = std::string(R"({"roleProfiles":)") + section + "}";
        EXPECT_EQ(parseOutputs(jsonOf(text)).roleProfiles, profiles) << section;
    }
}

TEST(OutputsParse, EachProfileStartsFromTheDefaults) {
    const OutputsConfig outputs = parseOutputs(jsonOf(R"({"profiles":{"a":{"backlight":{"min":5}},
        "b":{"batteryOff":{"effect":"off"},"simDisconnected":{"count":9}},
        "c":{"backlight":5,"simDisconnected":"off","batteryOff":[]},"d":[],"e":null,"":{},"  ":{},
        "night":{"backlight":{"min":6}},"NIGHT":{"backlight":{"min":1,"max":50}}}})"));
    std::map<std::string, std::string> profiles;
    for (const auto& [name, profile] : outputs.profiles) {
        profiles[name] = textOf(profile);
    }
    EXPECT_EQ(profiles, (std::map<std::string, std::string>{
                            {"A", "lvar|5|100|80|80|1| flash|0|4|150|100| breathe|0|5|1000|50|"},
                            {"B", "lvar|0|100|80|80|1| flash|0|9|150|100| OFF|0|5|1000|50|"},
                            {"C", textOf(makeDefaultProfile())},
                            // Of two names that differ in case the later key counts as a whole.
                            {"NIGHT", "lvar|6|100|80|80|1| flash|0|4|150|100| breathe|0|5|1000|50|"},
                        }));
}

TEST(DefaultProfileGuarantee, MakesTheProfileThatIsMissing) {
    const std::string day = R"("profiles":{"Day":{"backlight":{"min":9}}})";
    const struct {
        std::string section;
        const char* name;
        const char* key;
        std::size_t count;
        int min;
    } cases[] = {
        {"null", "default", "DEFAULT", 1, 0},
        {R"({"defaultProfile":"  ",)" + day + "}", "DEFAULT", "DEFAULT", 2, 0},
        {R"({"defaultProfile":" night mode ",)" + day + "}", "NIGHTMODE", "NIGHTMODE", 2, 0},
        {R"({"defaultProfile":"day",)" + day + "}", "DAY", "DAY", 1, 9},
    };
    for (const auto& each : cases) {
        const OutputsConfig outputs = outputsWith(each.section);
        EXPECT_EQ(outputs.defaultProfile, each.name) << each.section;
        ASSERT_TRUE(outputs.profiles.contains(each.key)) << each.section;
        EXPECT_EQ(outputs.profiles.at(each.key).backlight.min, each.min) << each.section;
        EXPECT_EQ(outputs.profiles.at(each.key).simDisconnected.effect, "flash") << each.section;
        EXPECT_EQ(outputs.profiles.size(), each.count) << each.section;
    }
}

TEST(ProfileValidation, AcceptsAndRefusesAtItsLimits) {
    const std::pair<const char*, std::vector<const char*>> backlights[] = {
        {"min/max must be between 0-100", {R"("min":50,"max":40)", R"("min":-1)", R"("max":101)", R"("min":1e10)"}},
        {"default must be between 0-100", {R"("default":-1)", R"("default":101)"}},
        {"value must be between 0-100", {R"("value":-1)", R"("value":101)"}},
        {"scale must be > 0", {R"("scale":0)", R"("scale":-0.5)"}},
        {"", {R"("min":40,"max":40)", R"("min":-0.9,"max":100.9)", R"("min":90,"default":0)", R"("default":100)"}},
        {"", {R"("value":0)", R"("value":100)", R"("scale":0.0001)", R"("scale":1e999)", R"("mode":"anything")"}},
    };
    for (const auto& [fault, rows] : backlights) {
        const std::string error = *fault == '\0' ? "" : std::string("outputs.profiles[NIGHT].backlight ") + fault;
        for (const char* members : rows) {
            EXPECT_EQ(errorOfProfile(std::string(R"("backlight":{)") + members + "}"), error) << members;
        }
    }
    EXPECT_EQ(errorOfProfile(R"("simDisconnected":{"effect":"blink"})"),
              "outputs.profiles[NIGHT].simDisconnected.effect is invalid");
    EXPECT_EQ(errorOfProfile(R"("batteryOff":{"effect":"blink"})"),
              "outputs.profiles[NIGHT].batteryOff.effect is invalid");
    EXPECT_EQ(errorOfProfile(R"("simDisconnected":{"effect":" flash "},"batteryOff":{"effect":" "})"), "");
    EXPECT_EQ(errorOfProfile(R"("batteryOff":{"brightness":-5,"count":1e10,"level":999})"), "");
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
    const std::pair<const char*, std::function<void()>> steps[] = {
        {"backlight min/max must be between 0-100", [&] { profile.backlight.min = 0; }},
        {"backlight default must be between 0-100", [&] { profile.backlight.defaultValue = 0; }},
        {"backlight value must be between 0-100", [&] { profile.backlight.value = 0; }},
        {"backlight scale must be > 0", [&] { profile.backlight.scale = 1.0; }},
        {"simDisconnected.effect is invalid", [&] { profile.simDisconnected.effect = ""; }},
        {"batteryOff.effect is invalid", [&] { profile.batteryOff.effect = "off"; }},
    };
    std::string error;
    for (const auto& [expected, fix] : steps) {
        EXPECT_FALSE(validateProfiles(outputs, error));
        EXPECT_EQ(error, std::string("outputs.profiles[P].") + expected);
        fix();
    }
    EXPECT_TRUE(validateProfiles(outputs, error));
}

} // namespace
