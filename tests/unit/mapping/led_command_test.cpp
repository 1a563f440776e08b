#include "mapping/output_state.h"
#include "tests/unit/mapping/mapping_settings.h"

#include <cmath>
#include <limits>
#include <vector>

namespace {

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double highestDouble = std::numeric_limits<double>::max();

/// The light with the simulator connected and the battery on.
LedCommand lit(const BacklightProfile& backlight, bool known, double value) {
    OutputProfile profile = makeDefaultProfile();
    profile.backlight = backlight;
    return computeLedCommand(profile, true, true, true, known, value);
}

std::uint8_t byteOf(std::int64_t value) {
    return static_cast<std::uint8_t>(value < 0 ? 0 : (value > 255 ? 255 : value));
}

struct LevelRow {
    double value;
    int brightness;
    std::int32_t min = 0;
    std::int32_t max = 100;
    double scale = 1.0;
};

void expectLevels(const std::vector<LevelRow>& rows) {
    for (const LevelRow& row : rows) {
        const BacklightProfile backlight{.min = row.min, .max = row.max, .scale = row.scale};
        EXPECT_EQ(lit(backlight, true, row.value), steady(byteOf(row.brightness)))
            << row.value << " by " << row.scale << " in " << row.min << " to " << row.max;
    }
}

TEST(LedCommandState, SessionComesBeforeBatteryAndBatteryBeforeBacklight) {
    OutputProfile profile = makeDefaultProfile();
    for (const bool known : {false, true}) {
        for (const bool on : {false, true}) {
            EXPECT_EQ(computeLedCommand(profile, false, known, on, known, 0.5), disconnectedFlash);
        }
        EXPECT_EQ(computeLedCommand(profile, true, true, false, known, 0.5), batteryBreathe);
        // An unknown battery counts as on.
        EXPECT_EQ(computeLedCommand(profile, true, false, known, true, 0.5), steady(50));
    }
    EXPECT_EQ(computeLedCommand(profile, true, true, true, true, 0.25), steady(25));
    profile.batteryOff = {"STEADY", 7, 1, 2, 3};
    EXPECT_EQ(computeLedCommand(profile, true, true, false, true, 1.0), steady(7));
}

TEST(BacklightMode, FixedOffOrTheVariable) {
    struct Row {
        const char* mode;
        int brightness;
    };
    for (const auto& [mode, brightness] : std::vector<Row>{
             // A dark backlight is a steady light of zero. Neither has bounds or a scale.
             {"FIXED", 77},
             {"fixed", 77},
             {" Fi xed\t", 77},
             {"OFF", 0},
             {"off", 0},
             {"o F f", 0},
             {"lvar", 60},
             {"LVAR", 60},
             {"", 60},
             {"FIXEDX", 60},
             {"STEADY", 60},
         }) {
        const BacklightProfile backlight{.mode = mode, .min = 40, .max = 60, .value = 77, .scale = 3.0};
        EXPECT_EQ(lit(backlight, true, 0.3), steady(byteOf(brightness))) << mode;
    }
}

TEST(BacklightMode, FixedValueIsCutToAByte) {
    for (const std::int32_t value : {lowest, -1, 0, 1, 254, 255, 256, 300, highest}) {
        EXPECT_EQ(lit({.mode = "FIXED", .value = value}, false, 0.0), steady(byteOf(value))) << value;
    }
}

TEST(BacklightLevel, UpToOneIsAFractionAndAboveOneAPercentage) {
    expectLevels({{0.5, 50},
                  {1.0, 100},
                  {std::nextafter(1.0, 0.0), 100},
                  {std::nextafter(1.0, 2.0), 1},
                  {1.5, 2},
                  {2.0, 2},
                  {99.4, 99},
                  {0.0, 0},
                  {-0.0, 0},
                  {-0.5, 0},
                  {std::numeric_limits<double>::denorm_min(), 0},
                  {-0.5, 12, 12},
                  {-50.0, 12, 12},
                  // Two negatives make a level.
                  {-0.3, 30, 0, 100, -1.0}});
    for (int percent = 0; percent <= 100; ++percent) {
        expectLevels({{percent / 100.0, percent}, {percent > 1 ? percent : 0.0, percent > 1 ? percent : 0}});
    }
}

TEST(BacklightLevel, HalvesRoundAwayFromZero) {
    expectLevels({{0.125, 13},
                  {2.5, 3},
                  {3.5, 4},
                  {2.4999, 2},
                  {0.0049, 0},
                  {0.005, 1},
                  // Adding a half to the double just below one half would carry it up.
                  {std::nextafter(64.0, 0.0), 0, 0, 100, 1.0 / 128.0},
                  {64.0, 1, 0, 100, 1.0 / 128.0}});
}

TEST(BacklightLevel, UnknownValueShowsTheDefaultScaledAndBounded) {
    for (const auto& [level, brightness] :
         std::vector<std::pair<std::int32_t, int>>{{80, 80}, {1, 100}, {0, 0}, {2, 2}, {100, 100}, {-1, 0}}) {
        EXPECT_EQ(lit({.defaultValue = level}, false, 55.0), steady(byteOf(brightness))) << level;
    }
    for (const auto& [level, brightness] : std::vector<std::pair<std::int32_t, int>>{{80, 40}, {0, 10}, {1, 50}}) {
        EXPECT_EQ(lit({.min = 10, .max = 60, .defaultValue = level, .scale = 0.5}, false, 0.0),
                  steady(byteOf(brightness)))
            << level;
    }
}

TEST(BacklightLevel, BoundsApplyAfterTheScaleAndTheUpperOneRules) {
    expectLevels({{0.9, 100, 0, 100, 2.0},
                  {0.4, 80, 0, 100, 2.0},
                  {0.9, 30, 30, 100, 0.1},
                  // Crossed bounds.
                  {50.0, 40, 60, 40},
                  {41.0, 40, 60, 40},
                  {40.0, 60, 60, 40},
                  {0.1, 60, 60, 40},
                  // Bounds beyond a byte.
                  {300.0, 255, 0, 400},
                  {5.0, 255, 300, 400},
                  {5.0, 0, -50, -1},
                  {254.0, 254, lowest, highest},
                  {-0.5, 0, lowest, highest}});
}

TEST(BacklightLevel, WhatIsNoNumberOrTooLargeCountsAsZero) {
    for (const double value : {nan, infinity, -infinity, highestDouble, -highestDouble, 1e300, 0x1p63, -0x1p63}) {
        expectLevels({{value, 0}, {value, 12, 12}});
    }
    for (const double scale : {nan, infinity, -infinity, highestDouble}) {
        expectLevels({{50.0, 12, 12, 100, scale}});
    }
    expectLevels({{0.0, 12, 12, 100, infinity}});
}

TEST(BacklightLevel, LargeValuesAreTakenByTheirLowThirtyTwoBits) {
    expectLevels({{4294967296.0 + 5, 5, 3, 200},      // 0x1_0000_0005
                  {4294967296.0, 3, 3, 200},          // 0x1_0000_0000
                  {2147483647.0, 200, 3, 200},        // the highest positive number
                  {2147483648.0, 3, 3, 200},          // the lowest negative one
                  {4294967295.0, 3, 3, 200},          // -1
                  {-10000000000.0, 200, 3, 200},      // -10^12: 727379968
                  {9223372036854774784.0, 3, 3, 200}, // the last double below 2^63: -1024
                  {0x1p62, 3, 3, 200, -2.0}});        // -2^63 itself still fits, and its low bits are 0
}

LedCommand effect(const char* name, std::int32_t param0, std::int32_t param1, std::int32_t param2) {
    return effectCommand(LedEffect{name, 9, param0, param1, param2});
}

TEST(EffectCommand, NamesAreReadInAnyCaseAndSpacing) {
    for (const char* name : {"STEADY", " st eady"}) {
        EXPECT_EQ(effect(name, 1, 2, 3), steady(9)) << name;
    }
    for (const char* name : {"BREATHE", "Breathe"}) {
        EXPECT_EQ(effect(name, 1, 2, 3), (LedCommand{2, 0, 1, 2, 3})) << name;
    }
    for (const char* name : {"FLASH", "\tflash\n"}) {
        EXPECT_EQ(effect(name, 1, 2, 3), (LedCommand{3, 0, 1, 2, 3})) << name;
    }
    for (const char* name : {"OFF", "off", "", "  ", "PULSE", "STEADYX", "FLAS"}) {
        EXPECT_EQ(effect(name, 1, 2, 3), LedCommand{}) << name;
    }
}

TEST(EffectCommand, NumbersAreCutToTheirFields) {
    struct Row {
        std::int32_t given;
        std::uint16_t word;
    };
    for (const auto& [given, word] : std::vector<Row>{{lowest, 0},
                                                      {-1, 0},
                                                      {254, 254},
                                                      {255, 255},
                                                      {256, 256},
                                                      {65534, 65534},
                                                      {65535, 65535},
                                                      {65536, 65535},
                                                      {70000, 65535},
                                                      {highest, 65535}}) {
        EXPECT_EQ(effectCommand({"STEADY", given, 9, 9, 9}), steady(byteOf(given))) << given;
        EXPECT_EQ(effect("BREATHE", given, 2, 3), (LedCommand{2, 0, byteOf(given), 2, 3})) << given;
        EXPECT_EQ(effect("BREATHE", 1, given, 3), (LedCommand{2, 0, 1, word, 3})) << given;
        EXPECT_EQ(effect("FLASH", 1, 2, given), (LedCommand{3, 0, 1, 2, byteOf(given)})) << given;
    }
}

TEST(BoardLedCommand, IsThatOfTheBoardsProfile) {
    MappingSettings settings;
    OutputsConfig& outputs = settings.config.outputs;
    for (const auto& [name, brightness] : {std::pair{"BRIGHT", 90}, {"DIM", 10}, {"AARDVARK", 33}}) {
        outputs.profiles[name].simDisconnected = {"STEADY", brightness, 0, 0, 0};
    }
    outputs.roleProfiles["MFD"] = "DIM";
    outputs.devices = {{"A", -1, "", " bright"}, {"", 1, "mfd", ""}, {"C", -1, "", "NOSUCH"}};
    EXPECT_EQ(boardLedCommand(settings.config, "A", 0, {}), steady(90));
    EXPECT_EQ(boardLedCommand(settings.config, "B", 1, {}), steady(10));
    // A profile that is missing gives the one that sorts first.
    EXPECT_EQ(boardLedCommand(settings.config, "C", 0, {}), steady(33));
    EXPECT_EQ(boardLedCommand(settings.config, "D", 0, {}), disconnectedFlash);
    LightState state{.simConnected = true, .backlightKnown = true, .backlightValue = 0.25};
    EXPECT_EQ(boardLedCommand(settings.config, "D", 0, state), steady(25));
    state.backlightKnown = false;
    EXPECT_EQ(boardLedCommand(settings.config, "D", 0, state), steady(80));
    state.batteryKnown = true;
    EXPECT_EQ(boardLedCommand(settings.config, "D", 0, state), batteryBreathe);
    state.batteryOn = true;
    EXPECT_EQ(boardLedCommand(settings.config, "D", 0, state), steady(80));
    outputs.profiles.clear();
    EXPECT_EQ(boardLedCommand(settings.config, "A", 0, {}), std::nullopt);
}

} // namespace
