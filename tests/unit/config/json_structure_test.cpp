#include "config/json.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

std::string errorOf(std::string_view text) {
    const JsonParseResult result = JsonParser::parse(text);
    EXPECT_EQ(result.ok, result.error.empty());
    EXPECT_TRUE(result.ok || result.value.type == JsonType::Null);
    return result.error;
}

JsonValue valueOf(std::string_view text) {
    JsonParseResult result = JsonParser::parse(text);
    EXPECT_TRUE(result.ok) << result.error;
    EXPECT_EQ(result.error, "");
    return result.value;
}

} // namespace

TEST(JsonDocument, EmptyTextIsAnError) {
    EXPECT_EQ(errorOf(""), "Unexpected end of input");
    EXPECT_EQ(errorOf(std::string_view()), "Unexpected end of input");
}

TEST(JsonDocument, OnlyWhitespaceIsAnError) {
    EXPECT_EQ(errorOf(" \t\r\n"), "Unexpected end of input");
}

TEST(JsonDocument, SkipsOneByteOrderMarkAtTheStart) {
    EXPECT_EQ(valueOf("\xEF\xBB\xBF{}").type, JsonType::Object);
    EXPECT_EQ(valueOf("\xEF\xBB\xBF \n7").number, 7.0);
}

TEST(JsonDocument, OnlyAByteOrderMarkIsAnError) {
    EXPECT_EQ(errorOf("\xEF\xBB\xBF"), "Unexpected end of input");
}

TEST(JsonDocument, RefusesAByteOrderMarkAnywhereElse) {
    EXPECT_EQ(errorOf(" \xEF\xBB\xBF{}"), "Unexpected token");
    EXPECT_EQ(errorOf("\xEF\xBB\xBF\xEF\xBB\xBF{}"), "Unexpected token");
    EXPECT_EQ(errorOf("{}\xEF\xBB\xBF"), "Unexpected trailing characters");
}

TEST(JsonDocument, RefusesAPartOfAByteOrderMark) {
    EXPECT_EQ(errorOf("\xEF\xBB"), "Unexpected token");
    EXPECT_EQ(errorOf("\xEF\xBB{}"), "Unexpected token");
}

TEST(JsonDocument, AcceptsEveryTypeAtTheRoot) {
    EXPECT_EQ(valueOf("null").type, JsonType::Null);
    EXPECT_EQ(valueOf("true").type, JsonType::Boolean);
    EXPECT_EQ(valueOf("1").type, JsonType::Number);
    EXPECT_EQ(valueOf("\"a\"").type, JsonType::String);
    EXPECT_EQ(valueOf("[]").type, JsonType::Array);
    EXPECT_EQ(valueOf("{}").type, JsonType::Object);
}

TEST(JsonDocument, RefusesASecondValue) {
    EXPECT_EQ(errorOf("1 2"), "Unexpected trailing characters");
    EXPECT_EQ(errorOf("{}{}"), "Unexpected trailing characters");
    EXPECT_EQ(errorOf("[1],"), "Unexpected trailing characters");
}

TEST(JsonDocument, DropsTheValueBeforeTrailingCharacters) {
    const JsonParseResult result = JsonParser::parse("{\"a\":[1]} x");
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.value.type, JsonType::Null);
    EXPECT_TRUE(result.value.object.empty());
}

TEST(JsonDocument, AZeroByteBehindTheValueIsATrailingCharacter) {
    EXPECT_EQ(errorOf(std::string_view("{}\0", 3)), "Unexpected trailing characters");
}

TEST(JsonDocument, OnlyFourBytesAreWhitespace) {
    EXPECT_EQ(valueOf(" \t\r\n1 \t\r\n").number, 1.0);
    EXPECT_EQ(errorOf("\f1"), "Unexpected token");
    EXPECT_EQ(errorOf("\v1"), "Unexpected token");
    EXPECT_EQ(errorOf("\xA0"
                      "1"),
              "Unexpected token");
}

TEST(JsonDocument, RefusesWhatCannotStartAValue) {
    for (const char* text : {"}", "]", ",", ":", "+1", ".5", "'a'", "Null", "TRUE", "infinity", "@", "\\", "\x80"}) {
        EXPECT_EQ(errorOf(text), "Unexpected token") << text;
    }
}

TEST(JsonDocument, KnowsNoComments) {
    EXPECT_EQ(errorOf("// note\n1"), "Unexpected token");
    EXPECT_EQ(errorOf("/* note */ 1"), "Unexpected token");
    EXPECT_EQ(errorOf("{ // note\n\"a\":1}"), "Expected string key");
    EXPECT_EQ(errorOf("{\"a\":1} // note"), "Unexpected trailing characters");
}

TEST(JsonDocument, DoesNotReadBehindTheGivenText) {
    const std::string_view text = "[1,2]";
    EXPECT_EQ(errorOf(text.substr(0, 4)), "Unterminated array");
    EXPECT_EQ(valueOf(std::string_view("12345").substr(0, 2)).number, 12.0);
    EXPECT_EQ(errorOf(std::string_view("true").substr(0, 3)), "Invalid boolean");
}

TEST(JsonWords, ReadsBooleans) {
    const JsonValue yes = valueOf("true");
    EXPECT_EQ(yes.type, JsonType::Boolean);
    EXPECT_TRUE(yes.boolean);
    const JsonValue no = valueOf("false");
    EXPECT_EQ(no.type, JsonType::Boolean);
    EXPECT_FALSE(no.boolean);
}

TEST(JsonWords, RefusesMisspeltWords) {
    for (const char* text : {"t", "tru", "trUe", "f", "fals", "falsy", "tfalse"}) {
        EXPECT_EQ(errorOf(text), "Invalid boolean") << text;
    }
    for (const char* text : {"n", "nul", "nULL", "nil", "nan"}) {
        EXPECT_EQ(errorOf(text), "Invalid null") << text;
    }
}

TEST(JsonWords, LeaveTheBytesBehindThemToWhateverReadsOn) {
    EXPECT_EQ(errorOf("truex"), "Unexpected trailing characters");
    EXPECT_EQ(errorOf("[nullnull]"), "Expected ',' or ']'");
    EXPECT_EQ(errorOf("{\"a\":falsefalse}"), "Expected ',' or '}'");
}

TEST(JsonObject, ReadsEmptyOnes) {
    EXPECT_TRUE(valueOf("{}").object.empty());
    EXPECT_TRUE(valueOf("{ \n }").object.empty());
}

TEST(JsonObject, KeepsTheFirstOfADuplicateKey) {
    const JsonValue value = valueOf(R"({"a":1,"a":2})");
    ASSERT_EQ(value.object.size(), 1U);
    EXPECT_EQ(value.object.at("a").number, 1.0);
}

TEST(JsonObject, KeepsTheFirstOfADuplicateKeyThatIsNotTheLastInOrder) {
    const JsonValue value = valueOf(R"({"a":1,"z":2,"a":[3],"m":4,"z":5})");
    ASSERT_EQ(value.object.size(), 3U);
    EXPECT_EQ(value.object.at("a").number, 1.0);
    EXPECT_TRUE(value.object.at("a").array.empty());
    EXPECT_EQ(value.object.at("z").number, 2.0);
}

TEST(JsonObject, ReadsTheValueOfADuplicateKeyInFull) {
    EXPECT_EQ(errorOf(R"({"a":1,"a":tru})"), "Invalid boolean");
    EXPECT_EQ(errorOf(R"({"a":1,"a":{"b":[1 2]}})"), "Expected ',' or ']'");
}

TEST(JsonObject, FindsDuplicatesAfterEscapesAreRead) {
    const JsonValue value = valueOf(R"({"a":1,"\u0061":2})");
    EXPECT_EQ(value.object.size(), 1U);
}

TEST(JsonObject, IteratesInKeyOrder) {
    std::string keys;
    for (const auto& [key, member] : valueOf(R"({"b":1,"a":2,"ab":3,"":4,"B":5})").object) {
        keys += "[" + key + "]";
    }
    EXPECT_EQ(keys, "[][B][a][ab][b]");
}

TEST(JsonObject, ComparesKeysAsUnsignedBytes) {
    const JsonValue value = valueOf("{\"\xC3\xA9\":1,\"z\":2}");
    EXPECT_EQ(value.object.begin()->first, "z");
}

TEST(JsonObject, ReadsNestedOnes) {
    const JsonValue value = valueOf(R"( { "a" : { "b" : [ { } , 1 ] } , "c" : null } )");
    EXPECT_EQ(value.object.at("a").object.at("b").array.at(1).number, 1.0);
    EXPECT_EQ(value.object.at("c").type, JsonType::Null);
}

TEST(JsonObject, RefusesWhatIsNotAKey) {
    for (const char* text : {"{1:2}", "{a:1}", "{,}", "{null:1}", "{[]:1}", "{'a':1}", "{\"a\":1,}", "{\"a\":1, }",
                             "{\"a\":1,,\"b\":2}", "{\"a\":1, "}) {
        EXPECT_EQ(errorOf(text), "Expected string key") << text;
    }
}

TEST(JsonObject, RefusesAMissingColon) {
    for (const char* text : {"{\"a\"", "{\"a\" ", "{\"a\" 1}", "{\"a\",\"b\"}", "{\"a\"}", "{\"a\"=1}"}) {
        EXPECT_EQ(errorOf(text), "Expected ':' after key") << text;
    }
}

TEST(JsonObject, RefusesAMissingValue) {
    EXPECT_EQ(errorOf("{\"a\":"), "Unexpected end of input");
    EXPECT_EQ(errorOf("{\"a\": \n"), "Unexpected end of input");
    EXPECT_EQ(errorOf("{\"a\":}"), "Unexpected token");
    EXPECT_EQ(errorOf("{\"a\"::1}"), "Unexpected token");
}

TEST(JsonObject, RefusesABadByteBehindAMember) {
    for (const char* text : {R"({"a":1 "b":2})", R"({"a":1])", R"({"a":1;"b":2})", R"({"a":1:2})"}) {
        EXPECT_EQ(errorOf(text), "Expected ',' or '}'") << text;
    }
}

TEST(JsonObject, IsUnterminatedAtTheEndOfTheText) {
    for (const char* text : {"{", "{ ", "{\"a\":1", "{\"a\":1 ", "{\"a\":1,"}) {
        EXPECT_EQ(errorOf(text), "Unterminated object") << text;
    }
}

TEST(JsonArray, ReadsEmptyOnes) {
    EXPECT_TRUE(valueOf("[]").array.empty());
    EXPECT_TRUE(valueOf("[ \t ]").array.empty());
}

TEST(JsonArray, KeepsInputOrder) {
    const JsonValue value = valueOf(R"([3, "x" ,null,[1] ])");
    ASSERT_EQ(value.array.size(), 4U);
    EXPECT_EQ(value.array[0].number, 3.0);
    EXPECT_EQ(value.array[1].string, "x");
    EXPECT_EQ(value.array[2].type, JsonType::Null);
    EXPECT_EQ(value.array[3].array.size(), 1U);
}

TEST(JsonArray, RefusesATrailingComma) {
    EXPECT_EQ(errorOf("[1,]"), "Unexpected token");
    EXPECT_EQ(errorOf("[,1]"), "Unexpected token");
    EXPECT_EQ(errorOf("[1,,2]"), "Unexpected token");
}

TEST(JsonArray, RefusesABadByteBehindAnElement) {
    for (const char* text : {"[1 2]", "[1}", "[1:2]", "[\"a\"\"b\"]", "[0x10]"}) {
        EXPECT_EQ(errorOf(text), "Expected ',' or ']'") << text;
    }
}

TEST(JsonArray, IsUnterminatedAtTheEndOfTheText) {
    for (const char* text : {"[", "[ ", "[1,2", "[1 ", "[1,", "[[1],[2]"}) {
        EXPECT_EQ(errorOf(text), "Unterminated array") << text;
    }
}

TEST(JsonArray, MissesAnElementBehindACommaAndBlanks) {
    EXPECT_EQ(errorOf("[1, "), "Unexpected end of input");
}

TEST(JsonFailure, TheInnermostMessageStands) {
    EXPECT_EQ(errorOf(R"({"a":[1,{"b":"x)"), "Unterminated string");
    EXPECT_EQ(errorOf(R"([{"a":[nul)"), "Invalid null");
}

TEST(JsonFailure, ASuccessfulReadAfterAFailedOneStartsAfresh) {
    EXPECT_EQ(errorOf("[1,"), "Unterminated array");
    EXPECT_EQ(valueOf("[1]").array.size(), 1U);
}
