#include "config/json.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

namespace {

double numberOf(std::string_view json) {
    const JsonParseResult result = JsonParser::parse(json);
    EXPECT_TRUE(result.ok) << json << ": " << result.error;
    EXPECT_EQ(result.value.type, JsonType::Number) << json;
    return result.value.number;
}

std::string errorOf(std::string_view json) {
    return JsonParser::parse(json).error;
}

std::string randomDigits(std::mt19937& random, unsigned most) {
    std::string digits;
    for (auto count = random() % (most + 1); count > 0; --count) {
        digits += static_cast<char>('0' + random() % 10);
    }
    return digits;
}

/// Something of the shape that the reader takes for one number, though it may not be one.
std::string randomToken(std::mt19937& random) {
    // The minus lets a token without integer digits be a number; a second one makes it none.
    std::string token = random() % 3 == 0 ? "--" : "-";
    token += randomDigits(random, 20);
    if (random() % 2 == 0) {
        token += '.';
        token += randomDigits(random, 25);
    }
    if (random() % 2 == 0) {
        token += random() % 2 == 0 ? "e" : "E";
        token += std::array{"", "+", "-"}[random() % 3];
        token += randomDigits(random, 3);
    }
    return token;
}

} // namespace

TEST(JsonNumber, ReadsWholeNumbers) {
    EXPECT_EQ(numberOf("0"), 0.0);
    EXPECT_EQ(numberOf("42"), 42.0);
    EXPECT_EQ(numberOf("-17"), -17.0);
    EXPECT_EQ(numberOf("9007199254740993"), 9007199254740992.0);
}

TEST(JsonNumber, ReadsFractionsAndExponents) {
    EXPECT_EQ(numberOf("0.1"), 0.1);
    EXPECT_EQ(numberOf("-2.5"), -2.5);
    EXPECT_EQ(numberOf("1e3"), 1000.0);
    EXPECT_EQ(numberOf("1E+3"), 1000.0);
    EXPECT_EQ(numberOf("25e-1"), 2.5);
    EXPECT_EQ(numberOf("1.7976931348623157e308"), 1.7976931348623157e308);
}

TEST(JsonNumber, AcceptsLeadingZeros) {
    EXPECT_EQ(numberOf("007"), 7.0);
    EXPECT_EQ(numberOf("-00"), 0.0);
    EXPECT_EQ(numberOf("1e007"), 1e7);
}

TEST(JsonNumber, AcceptsAPointWithoutDigitsBehindIt) {
    EXPECT_EQ(numberOf("1."), 1.0);
    EXPECT_EQ(numberOf("-1."), -1.0);
    EXPECT_EQ(numberOf("1.e2"), 100.0);
}

TEST(JsonNumber, AcceptsNoIntegerDigitsBehindAMinus) {
    EXPECT_EQ(numberOf("-.5"), -0.5);
    EXPECT_EQ(numberOf("-.5e1"), -5.0);
}

TEST(JsonNumber, RefusesNoIntegerDigitsWithoutAMinus) {
    EXPECT_EQ(errorOf(".5"), "Unexpected token");
}

TEST(JsonNumber, RefusesWhatTheConversionDoesNotConsumeInFull) {
    for (const char* json : {"-", "-.", "-e", "-e5", "-.e5", "1e", "1E", "1e+", "1e-", "1.e", "-1.5e+", "[-]"}) {
        EXPECT_EQ(errorOf(json), "Invalid number") << json;
    }
}

TEST(JsonNumber, KeepsTheSignOfZero) {
    EXPECT_TRUE(std::signbit(numberOf("-0")));
    EXPECT_TRUE(std::signbit(numberOf("-0.0e5")));
    EXPECT_FALSE(std::signbit(numberOf("0")));
}

TEST(JsonNumber, TooLargeBecomesInfinityWithoutAnError) {
    EXPECT_EQ(numberOf("1e999"), HUGE_VAL);
    EXPECT_EQ(numberOf("-1e999"), -HUGE_VAL);
    EXPECT_EQ(numberOf("1e99999999999999999999"), HUGE_VAL);
    EXPECT_EQ(numberOf(std::string(400, '9')), HUGE_VAL);
}

TEST(JsonNumber, TooSmallBecomesZeroWithoutAnError) {
    EXPECT_EQ(numberOf("1e-999"), 0.0);
    EXPECT_TRUE(std::signbit(numberOf("-1e-999")));
    EXPECT_EQ(numberOf("1e-99999999999999999999"), 0.0);
}

TEST(JsonNumber, ReadsSubnormalNumbers) {
    EXPECT_EQ(numberOf("5e-324"), 5e-324);
    EXPECT_EQ(numberOf("2.2250738585072011e-308"), 2.2250738585072011e-308);
}

TEST(JsonNumber, KnowsNoHexadecimalForm) {
    EXPECT_EQ(errorOf("0x10"), "Unexpected trailing characters");
    EXPECT_EQ(errorOf("{\"a\":0x10}"), "Expected ',' or '}'");
    EXPECT_EQ(errorOf("-0x10"), "Unexpected trailing characters");
}

TEST(JsonNumber, KnowsNeitherInfinitiesNorNotANumber) {
    EXPECT_EQ(errorOf("-inf"), "Invalid number");
    EXPECT_EQ(errorOf("-nan"), "Invalid number");
    EXPECT_EQ(errorOf("inf"), "Unexpected token");
}

TEST(JsonNumber, EndsAtTheFirstByteThatDoesNotBelong) {
    EXPECT_EQ(errorOf("1.2.3"), "Unexpected trailing characters");
    EXPECT_EQ(errorOf("1e5e5"), "Unexpected trailing characters");
    EXPECT_EQ(errorOf("1-2"), "Unexpected trailing characters");
    EXPECT_EQ(errorOf("--1"), "Invalid number");
    EXPECT_EQ(errorOf("1,5"), "Unexpected trailing characters");
    EXPECT_EQ(errorOf("1f"), "Unexpected trailing characters");
}

TEST(JsonNumber, DoesNotConvertDigitsBehindTheGivenText) {
    EXPECT_EQ(numberOf(std::string_view("1.5e9").substr(0, 3)), 1.5);
    EXPECT_EQ(errorOf(std::string_view("1.5e9").substr(0, 4)), "Invalid number");
    EXPECT_EQ(numberOf(std::string_view("1e9999").substr(0, 5)), HUGE_VAL);
}

TEST(JsonNumber, ReadsVeryLongTokens) {
    const std::string zeros(5000, '0');
    EXPECT_EQ(numberOf("0." + zeros + "1e5001"), 1.0);
    EXPECT_EQ(numberOf(zeros + "7"), 7.0);
    EXPECT_EQ(numberOf("1" + zeros + "e-5000"), 1.0);
}

TEST(JsonNumber, AgreesWithTheStandardConversionOnAnyToken) {
    std::mt19937 random(20240601);
    for (int round = 0; round < 20000; ++round) {
        const std::string token = randomToken(random);
        char* stop = nullptr;
        const double expected = std::strtod(token.c_str(), &stop);
        const bool whole = stop == token.c_str() + token.size();
        const JsonParseResult result = JsonParser::parse(token);
        ASSERT_EQ(result.ok, whole) << token;
        if (whole) {
            ASSERT_DOUBLE_EQ(result.value.number, expected) << token;
        }
    }
}
