#include "config/json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace {

JsonValue parsed(const char* text) {
    JsonParseResult result = JsonParser::parse(text);
    EXPECT_TRUE(result.ok) << result.error;
    return result.value;
}

JsonValue numberMember(double number) {
    JsonValue object;
    object.type = JsonType::Object;
    object.object["n"].type = JsonType::Number;
    object.object["n"].number = number;
    return object;
}

std::int32_t intOf(double number) {
    std::int32_t out = 7;
    EXPECT_TRUE(getInt(numberMember(number), "n", out));
    return out;
}

constexpr std::int32_t outOfRange = std::numeric_limits<std::int32_t>::min();

} // namespace

TEST(JsonFind, GivesTheMember) {
    const JsonValue object = parsed(R"({"a":null,"b":[1]})");
    ASSERT_NE(find(object, "a"), nullptr);
    EXPECT_EQ(find(object, "a")->type, JsonType::Null);
    EXPECT_EQ(find(object, "b")->array.size(), 1U);
}

TEST(JsonFind, GivesNullForAnAbsentKeyOrANonObject) {
    EXPECT_EQ(find(parsed(R"({"a":1})"), "A"), nullptr);
    EXPECT_EQ(find(parsed(R"({"a":1})"), ""), nullptr);
    EXPECT_EQ(find(parsed("[1]"), "a"), nullptr);
    EXPECT_EQ(find(JsonValue(), "a"), nullptr);
}

TEST(JsonFind, ComparesAllBytesOfAKey) {
    const JsonValue object = parsed(R"({"a\u0000b":1})");
    EXPECT_EQ(find(object, "a"), nullptr);
    EXPECT_NE(find(object, std::string_view("a\0b", 3)), nullptr);
}

TEST(JsonFind, LooksOnlyAtTheTypeOfTheValue) {
    JsonValue disguised = parsed(R"({"a":"x"})");
    disguised.type = JsonType::Array;
    std::string out = "kept";
    EXPECT_EQ(find(disguised, "a"), nullptr);
    EXPECT_FALSE(getString(disguised, "a", out));
    EXPECT_EQ(out, "kept");
}

TEST(JsonGetString, CopiesTheText) {
    std::string out = "old";
    EXPECT_TRUE(getString(parsed(R"({"a":"x\u0000y"})"), "a", out));
    EXPECT_EQ(out, std::string("x\0y", 3));
    EXPECT_TRUE(getString(parsed(R"({"a":""})"), "a", out));
    EXPECT_EQ(out, "");
}

TEST(JsonGetString, LeavesTheOutputAloneOtherwise) {
    std::string out = "kept";
    for (const char* text : {R"({"b":"x"})", R"({"a":1})", R"({"a":null})", R"({"a":["x"]})", "\"a\"", "null"}) {
        EXPECT_FALSE(getString(parsed(text), "a", out)) << text;
    }
    EXPECT_EQ(out, "kept");
}

TEST(JsonGetInt, TruncatesTowardZero) {
    EXPECT_EQ(intOf(2.9), 2);
    EXPECT_EQ(intOf(-2.9), -2);
    EXPECT_EQ(intOf(-0.9), 0);
    EXPECT_EQ(intOf(0.5), 0);
}

TEST(JsonGetInt, JudgesTheRangeAfterTruncation) {
    EXPECT_EQ(intOf(2147483647.0), 2147483647);
    EXPECT_EQ(intOf(2147483647.5), 2147483647);
    EXPECT_EQ(intOf(2147483648.0), outOfRange);
    EXPECT_EQ(intOf(-2147483648.0), outOfRange);
    EXPECT_EQ(intOf(-2147483647.9), -2147483647);
    EXPECT_EQ(intOf(-2147483648.9), outOfRange);
    EXPECT_EQ(intOf(-2147483649.0), outOfRange);
}

TEST(JsonGetInt, GivesTheLeastNumberForInfinitiesAndNotANumber) {
    EXPECT_EQ(intOf(HUGE_VAL), outOfRange);
    EXPECT_EQ(intOf(-HUGE_VAL), outOfRange);
    EXPECT_EQ(intOf(std::nan("")), outOfRange);
    EXPECT_EQ(intOf(1e10), outOfRange);
}

TEST(JsonGetInt, LeavesTheOutputAloneOtherwise) {
    std::int32_t out = 7;
    for (const char* text : {R"({"b":1})", R"({"a":"1"})", R"({"a":true})", R"({"a":null})", "[1]", "1"}) {
        EXPECT_FALSE(getInt(parsed(text), "a", out)) << text;
    }
    EXPECT_EQ(out, 7);
}

TEST(JsonGetObject, PointsIntoTheObject) {
    const JsonValue object = parsed(R"({"a":{"b":1}})");
    const JsonValue* out = nullptr;
    EXPECT_TRUE(getObject(object, "a", out));
    EXPECT_EQ(out, &object.object.at("a"));
}

TEST(JsonGetObject, LeavesTheOutputAloneOtherwise) {
    const JsonValue kept;
    const JsonValue* out = &kept;
    for (const char* text : {R"({"b":{}})", R"({"a":[]})", R"({"a":"{}"})", R"({"a":null})", "[{}]"}) {
        EXPECT_FALSE(getObject(parsed(text), "a", out)) << text;
    }
    EXPECT_EQ(out, &kept);
}
