#include "config/json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

namespace {

JsonValue parsed(const char* text) {
    JsonParseResult result = JsonParser::parse(text);
    EXPECT_TRUE(result.ok) << result.error;
    return result.value;
}

/// The member "a" of an object, as an integer.
std::int32_t intOf(double number) {
    JsonValue object;
    object.type = JsonType::Object;
    object.object["a"].type = JsonType::Number;
    object.object["a"].number = number;
    std::int32_t out = 7;
    EXPECT_TRUE(getInt(object, "a", out));
    return out;
}

constexpr std::int32_t outOfRange = std::numeric_limits<std::int32_t>::min();

} // namespace

TEST(JsonFind, GivesTheMemberOfExactlyThatKey) {
    const JsonValue object = parsed(R"({"a":null,"a\u0000b":[1]})");
    ASSERT_NE(find(object, "a"), nullptr);
    EXPECT_EQ(find(object, "a")->type, JsonType::Null);
    ASSERT_NE(find(object, std::string_view("a\0b", 3)), nullptr);
    EXPECT_EQ(find(object, std::string_view("a\0b", 3))->array.size(), 1U);
    EXPECT_EQ(find(object, "A"), nullptr);
    EXPECT_EQ(find(object, ""), nullptr);
}

TEST(JsonFind, GivesNullForANonObjectWhateverItHolds) {
    EXPECT_EQ(find(JsonValue(), "a"), nullptr);
    JsonValue disguised = parsed(R"({"a":"x"})");
    disguised.type = JsonType::Array;
    EXPECT_EQ(find(disguised, "a"), nullptr);
}

TEST(JsonGet, CopiesATextAndPointsToAnObject) {
    const JsonValue object = parsed(R"({"a":"x\u0000y","b":"","c":{"d":1}})");
    std::string text = "old";
    EXPECT_TRUE(getString(object, "a", text));
    EXPECT_EQ(text, std::string("x\0y", 3));
    EXPECT_TRUE(getString(object, "b", text));
    EXPECT_EQ(text, "");
    const JsonValue* member = nullptr;
    EXPECT_TRUE(getObject(object, "c", member));
    EXPECT_EQ(member, &object.object.at("c"));
}

TEST(JsonGet, LeavesTheOutputAloneForAMissingMemberAndOneOfAnotherType) {
    std::string text = "kept";
    std::int32_t number = 7;
    const JsonValue kept;
    const JsonValue* member = &kept;
    for (const char* document : {R"({"b":"x","c":1,"d":{}})", R"({"a":null})", R"({"a":true})", R"({"a":[{}]})", "[1]",
                                 "1", "null", "\"a\""}) {
        const JsonValue object = parsed(document);
        EXPECT_FALSE(getString(object, "a", text)) << document;
        EXPECT_FALSE(getInt(object, "a", number)) << document;
        EXPECT_FALSE(getObject(object, "a", member)) << document;
    }
    EXPECT_FALSE(getString(parsed(R"({"a":1})"), "a", text));
    EXPECT_FALSE(getInt(parsed(R"({"a":"1"})"), "a", number));
    EXPECT_FALSE(getObject(parsed(R"({"a":"{}"})"), "a", member));
    EXPECT_EQ(text, "kept");
    EXPECT_EQ(number, 7);
    EXPECT_EQ(member, &kept);
}

TEST(JsonGetInt, TruncatesTowardZeroAndThenJudgesTheRange) {
    const std::pair<double, std::int32_t> cases[] = {
        {2.9, 2},
        {-2.9, -2},
        {-0.9, 0},
        {0.5, 0},
        {2147483647.5, 2147483647},
        {-2147483647.9, -2147483647},
        {2147483648.0, outOfRange},
        {-2147483648.9, outOfRange},
        {-2147483649.0, outOfRange},
        {1e10, outOfRange},
        {HUGE_VAL, outOfRange},
        {-HUGE_VAL, outOfRange},
        {std::nan(""), outOfRange},
    };
    for (const auto& [number, expected] : cases) {
        EXPECT_EQ(intOf(number), expected) << number;
    }
}
