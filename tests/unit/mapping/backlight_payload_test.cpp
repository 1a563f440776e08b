#include "mapping/output_state.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

const std::string name = "LIGHTING_POTENTIOMETER_5";

/// The value that a text holds. A refused text must leave the value as it was.
std::optional<double> parsed(const std::string& text) {
    constexpr double untouched = -12345.5;
    double value = untouched;
    if (parseBacklightPayload(text, value)) {
        return value;
    }
    EXPECT_EQ(value, untouched) << text;
    return std::nullopt;
}

/// The value's text as the module writes a named one.
std::string named(const std::string& text) {
    return "(L:" + name + ")=" + text + ";";
}

std::string printed(const char* format, double value) {
    char text[512];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

} // namespace

TEST(BacklightPayloadNumber, NumberAloneIsTheValue) {
    const std::vector<std::pair<std::string, double>> rows = {
        {"0.42", 0.42},  {"0", 0.0},      {"1", 1.0},         {"100", 100.0},     {"-0.25", -0.25},
        {"+0.5", 0.5},   {".5", 0.5},     {"5.", 5.0},        {"1e-2", 0.01},     {"1E2", 100.0},
        {" 0.42", 0.42}, {"\t\n 7", 7.0}, {"0.750000", 0.75}, {"0x10", 16.0},     {"0x1p-1", 0.5},
        {"007", 7.0},    {"-0", -0.0},    {"1e308", 1e308},   {"1e-300", 1e-300},
    };
    for (const auto& [text, value] : rows) {
        EXPECT_EQ(parsed(text), value) << text;
    }
}

TEST(BacklightPayloadNumber, EveryThousandthComesBackInEachForm) {
    for (int thousandths = -2000; thousandths <= 101000; thousandths += 7) {
        const double value = thousandths / 1000.0;
        for (const char* format : {"%f", "%.3f", "%.17g", "%.16e"}) {
            const std::string text = printed(format, value);
            ASSERT_EQ(parsed(text), value) << text;
            ASSERT_EQ(parsed(named(text)), value) << text;
        }
    }
}

TEST(BacklightPayloadNumber, InfinityAndNotANumberAreValues) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(parsed("inf"), infinity);
    EXPECT_EQ(parsed("-Infinity"), -infinity);
    EXPECT_TRUE(std::isnan(parsed("nan").value_or(0)));
    EXPECT_EQ(parsed(name + "=INF"), infinity);
}

TEST(BacklightPayloadNumber, TooLargeAndTooSmallAreRefused) {
    for (const char* text : {"1e999", "-1e999", "1e-999", "-1e-999", "1e400"}) {
        EXPECT_EQ(parsed(text), std::nullopt) << text;
        EXPECT_EQ(parsed(name + "=" + text), std::nullopt) << text;
    }
}

TEST(BacklightPayloadNumber, AnythingBehindTheNumberRefusesABareNumber) {
    for (const char* text : {"0.42 ", "0.42;", "0.5\n", "1,5", "0.5abc", "1 2", "0.5.", "--1"}) {
        EXPECT_EQ(parsed(text), std::nullopt) << text;
    }
    EXPECT_EQ(parsed(std::string("0.5\0", 4)), std::nullopt);
}

TEST(BacklightPayloadNumber, TextWithoutNumberAndNameIsRefused) {
    for (const char* text : {"", " ", "abc", "=0.5", "e5", "+", "-", ".", "0x", "(L:OTHER_5)=0.5;"}) {
        EXPECT_EQ(parsed(text), std::nullopt) << text;
    }
}

TEST(BacklightPayloadName, ValueStandsBehindTheNamesEqualsSign) {
    EXPECT_EQ(parsed("(L:LIGHTING_POTENTIOMETER_5)=0.75;"), 0.75);
    EXPECT_EQ(parsed("(l:lighting_potentiometer_5)=0.75;"), 0.75);
    EXPECT_EQ(parsed("L:Lighting_Potentiometer_5=0.75"), 0.75);
    EXPECT_EQ(parsed("LIGHTING_POTENTIOMETER_5=0.75"), 0.75);
    EXPECT_EQ(parsed("x LIGHTING_POTENTIOMETER_5 , number = 0.75"), 0.75);
}

TEST(BacklightPayloadName, ValueEndsAtSemicolonOrLineEnd) {
    EXPECT_EQ(parsed(name + "=0.1;9"), 0.1);
    EXPECT_EQ(parsed(name + "=0.2\r\n9"), 0.2);
    EXPECT_EQ(parsed(name + "=0.3\n9"), 0.3);
    EXPECT_EQ(parsed(name + "=;5"), std::nullopt);
    EXPECT_EQ(parsed(name + "=\n5"), std::nullopt);
    EXPECT_EQ(parsed(name + "= \r5"), std::nullopt);
    EXPECT_EQ(parsed(name + "=\t5"), 5.0);
}

TEST(BacklightPayloadName, WordsBehindTheNumberAreIgnored) {
    EXPECT_EQ(parsed(name + "=0.25 percent"), 0.25);
    EXPECT_EQ(parsed(name + "=0.25abc"), 0.25);
    EXPECT_EQ(parsed(name + "=0.25=0.5"), 0.25);
    EXPECT_EQ(parsed(name + "=5e"), 5.0);
    EXPECT_EQ(parsed(name + std::string("=0.5\0.7", 7)), 0.5);
}

TEST(BacklightPayloadName, NoNumberBehindTheEqualsSignIsRefused) {
    for (const char* rest : {"=abc", "=", "==1", "= = 1", "=;", "=x1", "", " 0.5", ":0.5"}) {
        EXPECT_EQ(parsed(name + rest), std::nullopt) << rest;
    }
}

TEST(BacklightPayloadName, EqualsSignBeforeTheNameIsNotItsOwn) {
    EXPECT_EQ(parsed("A=0.5;" + name), std::nullopt);
    EXPECT_EQ(parsed("A=0.5;" + name + "=0.7"), 0.7);
}

TEST(BacklightPayloadName, FirstEqualsSignBehindTheNameCountsWhereverItStands) {
    EXPECT_EQ(parsed(name + ";OTHER=4"), 4.0);
    EXPECT_EQ(parsed(name + "\nOTHER=4\nTHIRD=5"), 4.0);
}

TEST(BacklightPayloadName, PrefixedNameIsPreferredToAnEarlierBareOne) {
    EXPECT_EQ(parsed(name + "=1;(L:" + name + ")=2;"), 2.0);
    EXPECT_EQ(parsed("(L:" + name + ")=2;" + name + "=1;"), 2.0);
}

TEST(BacklightPayloadName, PrefixedNameWithoutValueDoesNotFallBackToABareOne) {
    EXPECT_EQ(parsed(name + "=1;(L:" + name + ")"), std::nullopt);
}

TEST(BacklightPayloadName, FirstOfTwoHitsIsTaken) {
    EXPECT_EQ(parsed("(L:" + name + ")=0.1;(L:" + name + ")=0.2;"), 0.1);
}

TEST(BacklightPayloadName, NameMayBeginALongerOne) {
    EXPECT_EQ(parsed(name + "5=3"), 3.0);
    EXPECT_EQ(parsed("MY_" + name + "=3"), 3.0);
}

TEST(BacklightPayloadName, NameIsFoundAmongForeignBytes) {
    EXPECT_EQ(parsed("\xC3\xA4\xFF" + name + "\x80=0.5"), 0.5);
}

TEST(BacklightPayloadName, NumberBeforeTheNameIsNotTheValue) {
    EXPECT_EQ(parsed("0.3 " + name + "=0.6"), 0.6);
    EXPECT_EQ(parsed("0.3 " + name), std::nullopt);
}

TEST(BacklightPayloadName, CutOrSpacedNameIsNoName) {
    EXPECT_EQ(parsed("LIGHTING_POTENTIOMETER=0.5"), std::nullopt);
    EXPECT_EQ(parsed("LIGHTING POTENTIOMETER 5=0.5"), std::nullopt);
    EXPECT_EQ(parsed("LIGHTING_POTENTIOMETER_4=0.5"), std::nullopt);
}
