#include "mapping/output_state.h"
#include "text/backlight_variable.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace {

using std::string;

constexpr std::optional<double> none;
const string name(backlightVariable);

/// As the module sends the variable.
string assigned(const string& value) {
    return "(L:" + name + ")=" + value + ";";
}

/// The value that a text holds. A refused text must leave the value as it was.
std::optional<double> parsed(const string& text) {
    constexpr double untouched = -12345.5;
    double value = untouched;
    if (parseBacklightPayload(text, value)) {
        return value;
    }
    EXPECT_EQ(value, untouched) << text;
    return std::nullopt;
}

struct Row {
    string text;
    std::optional<double> value;
};

void expectValues(const std::vector<Row>& rows) {
    for (const auto& [text, value] : rows) {
        EXPECT_EQ(parsed(text), value) << text;
    }
}

void expectRefused(const std::vector<string>& texts) {
    for (const string& text : texts) {
        EXPECT_EQ(parsed(text), none) << text;
    }
}

TEST(BacklightPayload, NumberAloneIsTheValue) {
    for (const char* text : {"0.5", "+0.5", ".5", " 0.5", "\t\n 0.5", "5e-1", "5E-1", "0.500000", "000.5", "0x1p-1"}) {
        EXPECT_EQ(parsed(text), 0.5) << text;
    }
    expectValues({{"0", 0.0}, {"-0.25", -0.25}, {"5.", 5.0}, {"0x10", 16.0}, {"1e308", 1e308}, {"1e-300", 1e-300}});
    for (int thousandths = -2000; thousandths <= 101000; thousandths += 77) {
        const string text = std::to_string(thousandths / 1000.0);
        expectValues({{text, thousandths / 1000.0}, {assigned(text), thousandths / 1000.0}});
    }
}

TEST(BacklightPayload, InfinityAndNotANumberAreValues) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    expectValues({{"inf", infinity}, {"-Infinity", -infinity}, {name + "=INF", infinity}});
    EXPECT_TRUE(std::isnan(parsed("nan").value_or(0)));
}

TEST(BacklightPayload, TooLargeAndTooSmallAreRefused) {
    for (const string number : {"1e999", "-1e999", "1e-999", "-1e-999", "1e400"}) {
        expectRefused({number, assigned(number)});
    }
}

TEST(BacklightPayload, AnythingElseWithoutTheNameIsRefused) {
    expectRefused({"", " ", "abc", "=0.5", "e5", "+", "-", ".", "0x", "--1", "0.5.", "1 2", "1,5", "0.5abc"});
    expectRefused({"0.42 ", "0.42;", "0.5\n", string("0.5\0", 4), "(L:OTHER_5)=0.5;", "LIGHTING_POTENTIOMETER=0.5",
                   "LIGHTING POTENTIOMETER 5=0.5", "LIGHTING_POTENTIOMETER_4=0.5"});
}

TEST(BacklightPayload, ValueFollowsTheFirstEqualsSignBehindTheName) {
    expectValues({{"(L:LIGHTING_POTENTIOMETER_5)=0.75;", 0.75},
                  {"(l:lighting_potentiometer_5)=0.75;", 0.75},
                  {"L:Lighting_Potentiometer_5=0.75", 0.75},
                  {"LIGHTING_POTENTIOMETER_5=0.75", 0.75},
                  {"x LIGHTING_POTENTIOMETER_5 , number = 0.75", 0.75},
                  {"A=0.5;" + name, none},
                  {"A=0.5;" + name + "=0.7", 0.7},
                  {name + ";OTHER=4", 4.0},
                  {name + "\nOTHER=4\nTHIRD=5", 4.0},
                  {"0.3 " + name + "=0.6", 0.6},
                  {"0.3 " + name, none},
                  // The name may be part of a longer one, and among foreign bytes.
                  {name + "5=3", 3.0},
                  {"MY_" + name + "=3", 3.0},
                  {"\xC3\xA4\xFF" + name + "\x80=0.5", 0.5}});
    for (const char* rest : {"=abc", "=", "==1", "= = 1", "=;", "=x1", "", " 0.5", ":0.5"}) {
        expectRefused({name + rest});
    }
}

TEST(BacklightPayload, ValueEndsAtSemicolonOrLineEndAndMayBeFollowedByWords) {
    expectValues({{name + "=0.1;9", 0.1},
                  {name + "=0.2\r\n9", 0.2},
                  {name + "=0.3\n9", 0.3},
                  {name + "=;5", none},
                  {name + "=\n5", none},
                  {name + "= \r5", none},
                  {name + "=\t5", 5.0},
                  {name + "=0.25 percent", 0.25},
                  {name + "=0.25abc", 0.25},
                  {name + "=0.25=0.5", 0.25},
                  {name + "=5e", 5.0},
                  {name + string("=0.5\0.7", 7), 0.5}});
}

TEST(BacklightPayload, PrefixedNameIsPreferredAndTheFirstOfTwoTaken) {
    expectValues({{name + "=1;(L:" + name + ")=2;", 2.0},
                  {"(L:" + name + ")=2;" + name + "=1;", 2.0},
                  {"(L:" + name + ")=0.1;(L:" + name + ")=0.2;", 0.1},
                  // Without a value it doesn't fall back to the bare one.
                  {name + "=1;(L:" + name + ")", none}});
}

} // namespace
