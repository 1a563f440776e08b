#include "mapping/output_state.h"
#include "tests/unit/mapping/mapping_settings.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
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
    return static_cast<std::uint8_t>(std::clamp(value, std::int64_t{0}, std::int64_t{255}));
}

void expectLevel(int brightness, const std::vector<double>& values, const BacklightProfile& backlight = {}) {
    for (const double value : values) {
        EXPECT_EQ(lit(backlight, true, value), steady(byteOf(brightness)))
            << value << " by " << backlight.scale << " in " << backlight.min << " to " << backlight.max;
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
    // A dark backlight is a steady light of zero. Neither it nor a fixed one has bounds or a scale.
    const std::pair<int, std::vector<const char*>> rows[] = {
        {77, {"FIXED", "fixed", " Fi xed\t"}},
        {0, {"OFF", "off", "o F f"}},
        {60, {"lvar", "LVAR", "", "FIXEDX", "STEADY"}},
    };
    for (const auto& [brightness, modes] : rows) {
        for (const char* mode : modes) {
            expectLevel(brightness, {0.3}, {.mode = mode, .min = 40, .max = 60, .value = 77, .scale = 3.0});
        }
    }
}

TEST(BacklightMode, FixedValueIsCutToAByte) {
    for (const std::int32_t value : {lowest, -1, 0, 1, 254, 255, 256, 300, highest}) {
        EXPECT_EQ(lit({.mode = "FIXED", .value = value}, false, 0.0), steady(byteOf(value))) << value;
    }
}

TEST(BacklightLevel, UpToOneIsAFractionAndAboveOneAPercentage) {
    for (int percent = 2; percent <= 100; ++percent) {
        expectLevel(percent, {percent / 100.0, static_cast<double>(percent)});
    }
    expectLevel(100, {1.0, std::nextafter(1.0, 0.0)});
    expectLevel(1, {0.01, std::nextafter(1.0, 2.0)});
    expectLevel(0, {0.0, -0.0, -0.5, std::numeric_limits<double>::denorm_min()});
    expectLevel(12, {-0.5, -50.0}, {.min = 12});
    // Two negatives make a level.
    expectLevel(30, {-0.3}, {.scale = -1.0});
}

TEST(BacklightLevel, HalvesRoundAwayFromZero) {
    expectLevel(0, {0.0049});
    expectLevel(1, {0.005});
    expectLevel(2, {1.5, 2.4999});
    expectLevel(3, {2.5});
    expectLevel(13, {0.125});
    // Adding a half to the double just below one half would carry it up.
    expectLevel(0, {std::nextafter(64.0, 0.0)}, {.scale = 1.0 / 128.0});
    expectLevel(1, {64.0}, {.scale = 1.0 / 128.0});
}

TEST(BacklightLevel, UnknownValueShowsTheDefaultScaledAndBounded) {
    const auto expectDefault = [](int brightness, BacklightProfile backlight, std::int32_t level) {
        backlight.defaultValue = level;
        EXPECT_EQ(lit(backlight, false, 55.0), steady(byteOf(brightness))) << level;
    };
    expectDefault(80, {}, 80);
    expectDefault(100, {}, 1);
    expectDefault(2, {}, 2);
    expectDefault(0, {}, -1);
    expectDefault(40, {.min = 10, .max = 60, .scale = 0.5}, 80);
    expectDefault(10, {.min = 10, .max = 60, .scale = 0.5}, 0);
}

TEST(BacklightLevel, BoundsApplyAfterTheScaleAndTheUpperOneRules) {
    expectLevel(100, {0.9}, {.scale = 2.0});
    expectLevel(80, {0.4}, {.scale = 2.0});
    expectLevel(30, {0.9}, {.min = 30, .scale = 0.1});
    // Crossed bounds.
    expectLevel(40, {50.0, 41.0}, {.min = 60, .max = 40});
    expectLevel(60, {40.0, 0.1}, {.min = 60, .max = 40});
    // Bounds beyond a byte.
    expectLevel(255, {300.0}, {.max = 400});
    expectLevel(255, {5.0}, {.min = 300, .max = 400});
    expectLevel(0, {5.0}, {.min = -50, .max = -1});
    expectLevel(254, {254.0}, {.min = lowest, .max = highest});
    expectLevel(0, {-0.5}, {.min = lowest, .max = highest});
}

TEST(BacklightLevel, WhatIsNoNumberOrTooLargeCountsAsZero) {
    const std::vector<double> values{nan, infinity, -infinity, highestDouble, -highestDouble, 1e300, 0x1p63, -0x1p63};
    expectLevel(0, values);
    expectLevel(12, values, {.min = 12});
    for (const double scale : {nan, infinity, -infinity, highestDouble}) {
        expectLevel(12, {50.0}, {.min = 12, .scale = scale});
    }
    expectLevel(12, {0.0}, {.min = 12, .scale = infinity});
}

TEST(BacklightLevel, LargeValuesAreTakenByTheirLowThirtyTwoBits) {
    const BacklightProfile wide{.min = 3, .max = 200};
    expectLevel(5, {4294967296.0 + 5}, wide);      // 0x1_0000_0005
    expectLevel(3, {4294967296.0}, wide);          // 0x1_0000_0000
    expectLevel(200, {2147483647.0}, wide);        // the highest positive number
    expectLevel(3, {2147483648.0}, wide);          // the lowest negative one
    expectLevel(3, {4294967295.0}, wide);          // -1
    expectLevel(200, {-10000000000.0}, wide);      // -10^12: 727379968
    expectLevel(3, {9223372036854774784.0}, wide); // the last double below 2^63: -1024
    // -2^63 itself still fits, and its low bits are 0.
    expectLevel(3, {0x1p62}, {.min = 3, .max = 200, .scale = -2.0});
}

LedCommand effect(const char* name, std::int32_t param0, std::int32_t param1, std::int32_t param2) {
    return effectCommand(LedEffect{name, 9, param0, param1, param2});
}

TEST(EffectCommand, NamesAreReadInAnyCaseAndSpacing) {
    const std::pair<LedCommand, std::vector<const char*>> rows[] = {
        {steady(9), {"STEADY", " st eady"}},
        {{2, 0, 1, 2, 3}, {"BREATHE", "Breathe"}},
        {{3, 0, 1, 2, 3}, {"FLASH", "\tflash\n"}},
        {{}, {"OFF", "off", "", "  ", "PULSE", "STEADYX", "FLAS"}},
    };
    for (const auto& [command, names] : rows) {
        for (const char* name : names) {
            EXPECT_EQ(effect(name, 1, 2, 3), command) << name;
        }
    }
}

TEST(EffectCommand, NumbersAreCutToTheirFields) {
    for (const std::int32_t given : {lowest, -1, 254, 255, 256, 65534, 65535, 65536, highest}) {
        const auto word = static_cast<std::uint16_t>(std::clamp(given, 0, 65535));
        EXPECT_EQ(effectCommand({"STEADY", given, 9, 9, 9}), steady(byteOf(given))) << given;
        EXPECT_EQ(effect("BREATHE", given, 2, 3), (LedCommand{2, 0, byteOf(given), 2, 3})) << given;
        EXPECT_EQ(effect("BREATHE", 1, given, 3), (LedCommand{2, 0, 1, word, 3})) << given;
        EXPECT_EQ(effect("FLASH", 1, 2, given), (LedCommand{3, 0, 1, 2, byteOf(given)})) << given;
    }
}

TEST(BoardLedCommand, IsThatOfTheBoardsProfile) {
    MappingSettings settings;
    OutputsConfig& outputs = settings.config.outputs;
    outputs.profiles["BRIGHT"].simDisconnected = {"STEADY", 90, 0, 0, 0};
    outputs.devices = {{"A", -1, "", " bright"}, {"", 1, "", "bright"}};
    EXPECT_EQ(boardLedCommand(settings.config, "A", 0, {}), steady(90));
    EXPECT_EQ(boardLedCommand(settings.config, "B", 1, {}), steady(90));
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
