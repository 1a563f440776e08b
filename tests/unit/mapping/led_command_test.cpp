#include "mapping/output_state.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace {

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

LedCommand steady(std::uint8_t brightness) {
    return {.effect = 1, .brightness = brightness};
}

/// The light with the simulator connected and the battery on.
LedCommand lit(const BacklightProfile& backlight, bool known, double value) {
    OutputProfile profile = makeDefaultProfile();
    profile.backlight = backlight;
    return computeLedCommand(profile, true, true, true, known, value);
}

BacklightProfile bounded(std::int32_t min, std::int32_t max, double scale = 1.0) {
    BacklightProfile backlight;
    backlight.min = min;
    backlight.max = max;
    backlight.scale = scale;
    return backlight;
}

LedCommand lit(double value) {
    return lit(BacklightProfile{}, true, value);
}

LedCommand effect(const char* name, std::int32_t brightness, std::int32_t param0, std::int32_t param1,
                  std::int32_t param2) {
    return effectCommand(LedEffect{name, brightness, param0, param1, param2});
}

std::uint8_t byteOf(std::int64_t value) {
    return static_cast<std::uint8_t>(value < 0 ? 0 : (value > 255 ? 255 : value));
}

} // namespace

// The three states and their order.

TEST(LedCommandState, DisconnectedSimulatorShowsItsEffectWhateverTheBatterySays) {
    const OutputProfile profile = makeDefaultProfile();
    const LedCommand flash{.effect = 3, .count = 4, .periodMs = 150, .level = 100};
    for (const bool batteryKnown : {false, true}) {
        for (const bool batteryOn : {false, true}) {
            for (const bool backlightKnown : {false, true}) {
                EXPECT_EQ(computeLedCommand(profile, false, batteryKnown, batteryOn, backlightKnown, 0.5), flash);
            }
        }
    }
}

TEST(LedCommandState, BatteryOffShowsItsEffect) {
    const LedCommand breathe{.effect = 2, .count = 5, .periodMs = 1000, .level = 50};
    EXPECT_EQ(computeLedCommand(makeDefaultProfile(), true, true, false, true, 0.5), breathe);
    EXPECT_EQ(computeLedCommand(makeDefaultProfile(), true, true, false, false, 0.0), breathe);
}

TEST(LedCommandState, UnknownBatteryCountsAsOn) {
    EXPECT_EQ(computeLedCommand(makeDefaultProfile(), true, false, false, true, 0.5), steady(50));
    EXPECT_EQ(computeLedCommand(makeDefaultProfile(), true, false, true, true, 0.5), steady(50));
}

TEST(LedCommandState, BatteryOnShowsTheBacklight) {
    EXPECT_EQ(computeLedCommand(makeDefaultProfile(), true, true, true, true, 0.25), steady(25));
}

TEST(LedCommandState, EffectOfBatteryOffMayBeSteady) {
    OutputProfile profile = makeDefaultProfile();
    profile.batteryOff = {"STEADY", 7, 1, 2, 3};
    EXPECT_EQ(computeLedCommand(profile, true, true, false, true, 1.0), steady(7));
}

// The modes of the backlight.

TEST(BacklightMode, FixedTakesItsValueAndNoBounds) {
    for (const char* mode : {"FIXED", "fixed", " Fi xed\t"}) {
        BacklightProfile backlight = bounded(40, 60, 3.0);
        backlight.mode = mode;
        backlight.value = 77;
        EXPECT_EQ(lit(backlight, true, 0.1), steady(77)) << mode;
    }
}

TEST(BacklightMode, FixedIsCutToAByteOverItsWholeRange) {
    BacklightProfile backlight;
    backlight.mode = "FIXED";
    for (std::int32_t value = -400; value <= 700; ++value) {
        backlight.value = value;
        ASSERT_EQ(lit(backlight, false, 0.0), steady(byteOf(value))) << value;
    }
    for (const std::int32_t value : {lowest, highest}) {
        backlight.value = value;
        EXPECT_EQ(lit(backlight, false, 0.0), steady(byteOf(value))) << value;
    }
}

TEST(BacklightMode, OffIsASteadyLightOfZero) {
    for (const char* mode : {"OFF", "off", "o F f"}) {
        BacklightProfile backlight = bounded(40, 60);
        backlight.mode = mode;
        EXPECT_EQ(lit(backlight, true, 1.0), steady(0)) << mode;
    }
}

TEST(BacklightMode, AnyOtherTextFollowsTheVariable) {
    for (const char* mode : {"lvar", "LVAR", "", "   ", "FIXEDX", "OF", "STEADY", "FLASH"}) {
        BacklightProfile backlight;
        backlight.mode = mode;
        EXPECT_EQ(lit(backlight, true, 0.3), steady(30)) << mode;
    }
}

TEST(BacklightMode, OtherFieldsAreZeroInAllOfThem) {
    for (const char* mode : {"FIXED", "OFF", "lvar"}) {
        BacklightProfile backlight;
        backlight.mode = mode;
        const LedCommand command = lit(backlight, true, 0.5);
        EXPECT_EQ(command.effect, 1) << mode;
        EXPECT_EQ(command.count + command.periodMs + command.level, 0) << mode;
    }
}

// The variable's value.

TEST(BacklightLevel, HalfIsFiftyPercent) {
    EXPECT_EQ(lit(0.5), steady(50));
}

TEST(BacklightLevel, ExactlyOneIsTheLastFraction) {
    EXPECT_EQ(lit(1.0), steady(100));
    EXPECT_EQ(lit(std::nextafter(1.0, 2.0)), steady(1));
    EXPECT_EQ(lit(std::nextafter(1.0, 0.0)), steady(100));
}

TEST(BacklightLevel, AboveOneIsAPercentage) {
    EXPECT_EQ(lit(1.5), steady(2));
    EXPECT_EQ(lit(2.0), steady(2));
    EXPECT_EQ(lit(99.4), steady(99));
}

TEST(BacklightLevel, EveryWholeFractionAndPercentageIsItself) {
    for (int percent = 0; percent <= 100; ++percent) {
        ASSERT_EQ(lit(percent / 100.0), steady(static_cast<std::uint8_t>(percent))) << percent;
        if (percent > 1) {
            ASSERT_EQ(lit(percent), steady(static_cast<std::uint8_t>(percent))) << percent;
        }
    }
}

TEST(BacklightLevel, HalvesRoundAwayFromZero) {
    EXPECT_EQ(lit(0.125), steady(13));
    EXPECT_EQ(lit(2.5), steady(3));
    EXPECT_EQ(lit(3.5), steady(4));
    EXPECT_EQ(lit(2.4999), steady(2));
    // The double just below one half must not be carried up by adding a half to it.
    EXPECT_EQ(lit(bounded(0, 100, 1.0 / 128.0), true, std::nextafter(64.0, 0.0)), steady(0));
    EXPECT_EQ(lit(bounded(0, 100, 1.0 / 128.0), true, 64.0), steady(1));
}

TEST(BacklightLevel, UnknownValueShowsTheDefault) {
    BacklightProfile backlight;
    for (const auto& [level, brightness] :
         std::vector<std::pair<std::int32_t, int>>{{80, 80}, {1, 100}, {0, 0}, {2, 2}, {100, 100}, {-1, 0}}) {
        backlight.defaultValue = level;
        EXPECT_EQ(lit(backlight, false, 55.0), steady(byteOf(brightness))) << level;
    }
}

TEST(BacklightLevel, UnknownValueIsScaledAndBoundedToo) {
    BacklightProfile backlight = bounded(10, 60, 0.5);
    backlight.defaultValue = 80;
    EXPECT_EQ(lit(backlight, false, 0.0), steady(40));
    backlight.defaultValue = 0;
    EXPECT_EQ(lit(backlight, false, 0.0), steady(10));
    backlight.defaultValue = 1;
    EXPECT_EQ(lit(backlight, false, 0.0), steady(50));
}

TEST(BacklightLevel, BoundsApplyAfterTheScale) {
    EXPECT_EQ(lit(bounded(0, 100, 2.0), true, 0.9), steady(100));
    EXPECT_EQ(lit(bounded(0, 100, 2.0), true, 0.4), steady(80));
    EXPECT_EQ(lit(bounded(30, 100, 0.1), true, 0.9), steady(30));
}

TEST(BacklightLevel, UpperBoundRulesWhenTheBoundsAreCrossed) {
    const BacklightProfile crossed = bounded(60, 40);
    EXPECT_EQ(lit(crossed, true, 50.0), steady(40));
    EXPECT_EQ(lit(crossed, true, 41.0), steady(40));
    EXPECT_EQ(lit(crossed, true, 40.0), steady(60));
    EXPECT_EQ(lit(crossed, true, 0.1), steady(60));
    EXPECT_EQ(lit(crossed, true, 0.9), steady(40));
}

TEST(BacklightLevel, BoundsBeyondAByteAreCutToIt) {
    EXPECT_EQ(lit(bounded(0, 400), true, 300.0), steady(255));
    EXPECT_EQ(lit(bounded(300, 400), true, 5.0), steady(255));
    EXPECT_EQ(lit(bounded(-50, -1), true, 5.0), steady(0));
    EXPECT_EQ(lit(bounded(lowest, highest), true, 254.0), steady(254));
    EXPECT_EQ(lit(bounded(lowest, highest), true, -0.5), steady(0));
}

TEST(BacklightLevel, NegativeValuesEndAtTheLowerBound) {
    EXPECT_EQ(lit(-0.5), steady(0));
    EXPECT_EQ(lit(bounded(12, 100), true, -0.5), steady(12));
    EXPECT_EQ(lit(bounded(12, 100), true, -50.0), steady(12));
    // Two negatives make a level.
    EXPECT_EQ(lit(bounded(0, 100, -1.0), true, -0.3), steady(30));
}

TEST(BacklightLevel, WhatIsNoNumberOrTooLargeCountsAsZero) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double highestDouble = std::numeric_limits<double>::max();
    for (const double value : {nan, infinity, -infinity, highestDouble, -highestDouble, 1e300, 0x1p63, -0x1p63}) {
        EXPECT_EQ(lit(value), steady(0)) << value;
        EXPECT_EQ(lit(bounded(12, 100), true, value), steady(12)) << value;
    }
    for (const double scale : {nan, infinity, -infinity, highestDouble}) {
        EXPECT_EQ(lit(bounded(12, 100, scale), true, 50.0), steady(12)) << scale;
    }
    EXPECT_EQ(lit(bounded(12, 100, infinity), true, 0.0), steady(12));
}

TEST(BacklightLevel, LargeValuesAreTakenByTheirLowThirtyTwoBits) {
    struct Row {
        double value;
        double scale;
        int brightness;
    };
    const std::vector<Row> rows = {
        {4294967296.0 + 5, 1.0, 5},      // 0x1_0000_0005
        {4294967296.0, 1.0, 3},          // 0x1_0000_0000
        {2147483647.0, 1.0, 200},        // the highest positive number
        {2147483648.0, 1.0, 3},          // the lowest negative one
        {4294967295.0, 1.0, 3},          // -1
        {-10000000000.0, 1.0, 200},      // -10^12: 727379968
        {9223372036854774784.0, 1.0, 3}, // the last double below 2^63: -1024
        {0x1p62, -2.0, 3},               // -2^63 itself still fits, and its low bits are 0
    };
    for (const Row& row : rows) {
        EXPECT_EQ(lit(bounded(3, 200, row.scale), true, row.value), steady(byteOf(row.brightness))) << row.value;
    }
}

TEST(BacklightLevel, TinyValuesAreZero) {
    EXPECT_EQ(lit(std::numeric_limits<double>::denorm_min()), steady(0));
    EXPECT_EQ(lit(-0.0), steady(0));
    EXPECT_EQ(lit(0.0049), steady(0));
    EXPECT_EQ(lit(0.005), steady(1));
}

// Values up to 110 that are a multiple of 1/1024, scales that are one of 1/16, in whole numbers throughout.
TEST(BacklightLevel, AgreesWithWholeNumberArithmetic) {
    const std::vector<std::pair<std::int32_t, std::int32_t>> bounds = {{0, 100}, {20, 80}, {0, 255}, {60, 40}, {5, 5}};
    for (const std::int64_t scale : {1, 8, 15, 16, 17, 40, 160}) {
        for (std::int64_t part = -2048; part <= 112'640; part += 3) {
            const std::int64_t product = part * (part <= 1024 ? 100 : 1) * scale;
            const std::int64_t half = product < 0 ? -8192 : 8192;
            const std::int64_t whole = (product + half) / 16384;
            for (const auto& [min, max] : bounds) {
                const std::int64_t level = whole > max ? max : (whole < min ? min : whole);
                const LedCommand command =
                    lit(bounded(min, max, static_cast<double>(scale) / 16.0), true, static_cast<double>(part) / 1024.0);
                ASSERT_EQ(command, steady(byteOf(level))) << part << "/1024 by " << scale << "/16";
            }
        }
    }
}

// The effects.

TEST(EffectCommand, SteadyTakesItsBrightnessOverTheWholeRange) {
    for (std::int32_t brightness = -300; brightness <= 600; ++brightness) {
        ASSERT_EQ(effect("STEADY", brightness, 9, 9, 9), steady(byteOf(brightness))) << brightness;
    }
    EXPECT_EQ(effect("STEADY", lowest, 9, 9, 9), steady(0));
    EXPECT_EQ(effect("STEADY", highest, 9, 9, 9), steady(255));
}

TEST(EffectCommand, BreatheAndFlashCutTheirNumbersToTheirFields) {
    struct Row {
        std::int32_t given;
        std::uint8_t byte;
        std::uint16_t word;
    };
    const std::vector<Row> rows = {
        {lowest, 0, 0},      {-1, 0, 0},          {0, 0, 0},           {1, 1, 1},
        {254, 254, 254},     {255, 255, 255},     {256, 255, 256},     {65534, 255, 65534},
        {65535, 255, 65535}, {65536, 255, 65535}, {70000, 255, 65535}, {highest, 255, 65535},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(effect("BREATHE", 9, row.given, 2, 3), (LedCommand{2, 0, row.byte, 2, 3})) << row.given;
        EXPECT_EQ(effect("BREATHE", 9, 1, row.given, 3), (LedCommand{2, 0, 1, row.word, 3})) << row.given;
        EXPECT_EQ(effect("BREATHE", 9, 1, 2, row.given), (LedCommand{2, 0, 1, 2, row.byte})) << row.given;
        EXPECT_EQ(effect("FLASH", 9, row.given, row.given, row.given), (LedCommand{3, 0, row.byte, row.word, row.byte}))
            << row.given;
    }
}

TEST(EffectCommand, NamesAreReadInAnyCaseAndSpacing) {
    EXPECT_EQ(effect(" st eady", 8, 0, 0, 0).effect, 1);
    EXPECT_EQ(effect("Breathe", 8, 0, 0, 0).effect, 2);
    EXPECT_EQ(effect("\tflash\n", 8, 0, 0, 0).effect, 3);
}

TEST(EffectCommand, OffAndUnknownNamesGiveNoEffect) {
    for (const char* name : {"OFF", "off", "", "  ", "PULSE", "STEADYX", "FLAS"}) {
        EXPECT_EQ(effect(name, 9, 9, 9, 9), LedCommand{}) << name;
    }
}
