// The reader of JSON documents: what reads as which value, and what is which error.

#include "config/json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace std::string_literals;

namespace {

/// Reads a text that must be a document.
JsonValue valueOf(std::string_view text) {
    JsonParseResult result = JsonParser::parse(text);
    EXPECT_TRUE(result.ok) << text << ": " << result.error;
    EXPECT_EQ(result.error, "") << text;
    return result.value;
}

double numberOf(std::string_view text) {
    const JsonValue value = valueOf(text);
    EXPECT_EQ(value.type, JsonType::Number) << text;
    return value.number;
}

std::string textOf(std::string_view text) {
    const JsonValue value = valueOf(text);
    EXPECT_EQ(value.type, JsonType::String) << text;
    return value.string;
}

/// Reads a text that must not be one.
std::string errorOf(std::string_view text) {
    const JsonParseResult result = JsonParser::parse(text);
    EXPECT_FALSE(result.ok) << text;
    EXPECT_EQ(result.value.type, JsonType::Null) << text;
    EXPECT_TRUE(result.value.array.empty() && result.value.object.empty()) << text;
    return result.error;
}

void expectError(const char* error, const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
        EXPECT_EQ(errorOf(text), error) << text;
    }
}

std::string repeated(const std::string& text, std::size_t count) {
    std::string all;
    for (; count > 0; --count) {
        all += text;
    }
    return all;
}

std::string arrays(std::size_t depth, const std::string& inner = "") {
    return std::string(depth, '[') + inner + std::string(depth, ']');
}

TEST(Json, FailsWithTheInnermostErrorAndNoValue) {
    expectError("Unexpected end of input", {"", " \t\r\n", "\xEF\xBB\xBF", "{\"a\":", "{\"a\": \n", "[1, "});
    expectError("Unexpected token", {"}", "]", ",", ":", "+1", ".5", "'a'", "Null", "TRUE", "inf", "@", "\\"});
    expectError("Unexpected token", {"// note\n1", "/* note */ 1", "{\"a\":}", "{\"a\"::1}", "[1,]", "[,1]", "[1,,2]"});
    expectError("Unexpected token", {"\x80", "\f1", "\v1", "\xA0\x31", "\xEF\xBB", "\xEF\xBB{}", " \xEF\xBB\xBF{}",
                                     "\xEF\xBB\xBF\xEF\xBB\xBF{}"});
    expectError("Unexpected trailing characters",
                {"1 2", "{}{}", "[1],", "{}\0"s, "{\"a\":[1]} x", "{}\xEF\xBB\xBF", "{\"a\":1} // note", "truex",
                 "0x10", "-0x10", "1.2.3", "1e5e5", "1-2", "1,5", "1f"});
    expectError("Expected string key", {"{1:2}", "{a:1}", "{,}", "{null:1}", "{[]:1}", "{'a':1}", "{\"a\":1,}",
                                        "{\"a\":1, }", "{\"a\":1,,\"b\":2}", "{\"a\":1, ", "{ // note\n\"a\":1}"});
    expectError("Expected ':' after key", {"{\"a\"", "{\"a\" ", "{\"a\" 1}", "{\"a\",\"b\"}", "{\"a\"}", "{\"a\"=1}"});
    expectError("Expected ',' or '}'", {R"({"a":1 "b":2})", R"({"a":1])", R"({"a":1;"b":2})", R"({"a":1:2})",
                                        "{\"a\":falsefalse}", "{\"a\":0x10}"});
    expectError("Expected ',' or ']'", {"[1 2]", "[1}", "[1:2]", "[\"a\"\"b\"]", "[0x10]", "[nullnull]"});
    expectError("Unterminated object", {"{", "{ ", "{\"a\":1", "{\"a\":1 ", "{\"a\":1,"});
    expectError("Unterminated array", {"[", "[ ", "[1,2", "[1 ", "[1,", "[[1],[2]", std::string(1000, '[')});
    expectError("Unterminated string", {"\"", "\"abc", "\"abc\\\"", "{\"abc", R"("\u0041)", R"({"a":[1,{"b":"x)"});
    expectError("Invalid escape sequence", {"\"\\", "\"abc\\"});
    expectError("Invalid escape character", {R"("\a")", R"("\v")", R"("\0")", R"("\x41")", R"("\'")", R"("\U0041")",
                                             R"("\N")", "\"\\\n\"", "\"\\\xC3\"", "\"\\\0\""s, R"({"\q":1})"});
    expectError("Invalid unicode escape",
                {R"("\u)", R"("\u0)", R"("\u00)", R"("\u004)", R"("\u00g0")", R"("\u004")", R"("\u-041")",
                 R"("\u+041")", R"("\u 041")", R"("\u0x41")", R"("\u004 ")", R"("\uD83\uDE00")"});
    expectError("Invalid boolean",
                {"t", "tru", "trUe", "f", "fals", "falsy", "tfalse", R"({"a":1,"a":tru})", arrays(1000, "tru")});
    expectError("Invalid null", {"n", "nul", "nULL", "nil", "nan", R"([{"a":[nul)"});
    expectError("Invalid number", {"-", "-.", "-e", "-e5", "-.e5", "1e", "1E", "1e+", "1e-", "1.e", "-1.5e+", "[-]",
                                   "-inf", "-nan", "--1"});
}

TEST(Json, LimitsTheNestingOfArraysAndObjectsToAThousandLevels) {
    const std::string open = repeated("[{\"a\":", 500);
    const std::string close = repeated("}]", 500);
    valueOf(arrays(1000, "1,\"x\",null"));
    valueOf(open + "1" + close);
    // Levels that are closed don't count.
    valueOf("[" + arrays(999) + "," + arrays(999) + "]");
    valueOf("{\"a\":1,\"a\":" + arrays(999) + "}");
    expectError("Nesting too deep", {arrays(1001), arrays(1000, "{}"), open + "[]" + close, open + "{}" + close,
                                     "{\"a\":1,\"a\":" + arrays(1000) + "}", std::string(4'000'000, '[')});
}

TEST(Json, SkipsOneByteOrderMarkAndFourKindsOfWhitespace) {
    EXPECT_EQ(valueOf("\xEF\xBB\xBF{}").type, JsonType::Object);
    EXPECT_EQ(numberOf("\xEF\xBB\xBF \t\r\n7 \t\r\n"), 7.0);
}

TEST(Json, StopsAtTheEndOfTheGivenText) {
    EXPECT_EQ(errorOf(std::string_view("[1,2]").substr(0, 4)), "Unterminated array");
    EXPECT_EQ(errorOf(std::string_view("true").substr(0, 3)), "Invalid boolean");
    EXPECT_EQ(errorOf(std::string_view("1.5e9").substr(0, 4)), "Invalid number");
    EXPECT_EQ(numberOf(std::string_view("1.5e9").substr(0, 3)), 1.5);
    EXPECT_EQ(numberOf(std::string_view("1e9999").substr(0, 5)), HUGE_VAL);
}

TEST(Json, SetsOnlyTheAlternativeOfItsType) {
    const JsonValue none = valueOf("null");
    EXPECT_FALSE(none.boolean || none.number != 0 || !none.string.empty());
    EXPECT_TRUE(valueOf("true").boolean);
    EXPECT_EQ(valueOf("false").type, JsonType::Boolean);
    EXPECT_FALSE(valueOf("false").boolean);
    const JsonValue text = valueOf("\"12\"");
    EXPECT_EQ(text.number, 0.0);
    EXPECT_TRUE(text.array.empty() && text.object.empty());
}

TEST(Json, ReadsNumbers) {
    using Number = std::pair<std::string, double>;
    for (const auto& [text, number] :
         {Number{"0", 0.0}, Number{"42", 42.0}, Number{"-17", -17.0}, Number{"0.1", 0.1}, Number{"1e3", 1000.0},
          Number{"1E+3", 1000.0}, Number{"25e-1", 2.5}, Number{"9007199254740993", 9007199254740992.0},
          Number{"1.7976931348623157e308", 1.7976931348623157e308}, Number{"5e-324", 5e-324},
          Number{"2.2250738585072011e-308", 2.2250738585072011e-308},
          // Looser than JSON: leading zeros, no digits behind the point, none in front of it behind a minus.
          Number{"007", 7.0}, Number{"1e007", 1e7}, Number{"-1.", -1.0}, Number{"1.e2", 100.0}, Number{"-.5e1", -5.0},
          // Out of range is no error.
          Number{"1e999", HUGE_VAL}, Number{std::string(400, '9'), HUGE_VAL},
          Number{"-1e99999999999999999999", -HUGE_VAL}, Number{"1e-99999999999999999999", 0.0},
          Number{"0." + std::string(5000, '0') + "1e5001", 1.0},
          Number{"1" + std::string(5000, '0') + "e-5000", 1.0}}) {
        EXPECT_EQ(numberOf(text), number) << text;
    }
    for (const char* negative : {"-0", "-0.0e5", "-1e-999"}) {
        EXPECT_TRUE(numberOf(negative) == 0 && std::signbit(numberOf(negative))) << negative;
    }
    EXPECT_FALSE(std::signbit(numberOf("0")));
}

TEST(Json, ReadsStrings) {
    const std::pair<std::string_view, std::string> cases[] = {
        {"\"\"", ""},
        {R"("\"\\\/\b\f\n\r\t")", "\"\\/\b\f\n\r\t"},
        {R"("ab\ncd\\ef\\\"")", "ab\ncd\\ef\\\""},
        {R"("\u0041\u007F\u004a\u004B1")", "A\x7FJK1"},
        {R"("a\u0000b")", "a\0b"s},
        // The log and the boards are ASCII: any other code becomes a question mark.
        {R"("\u0080\u00e9\uFFFF")", "???"},
        {R"("\uD83D\uDE00")", "??"}};
    for (const auto& [text, string] : cases) {
        EXPECT_EQ(textOf(text), string) << text;
    }
    for (int byte = 0; byte < 256; ++byte) {
        const std::string raw(1, static_cast<char>(byte));
        if (raw != "\"" && raw != "\\") {
            EXPECT_EQ(textOf("\"" + raw + "\""), raw) << byte;
        }
    }
}

TEST(Json, ReadsArraysInOrder) {
    EXPECT_TRUE(valueOf("[ \t ]").array.empty());
    const JsonValue value = valueOf(R"([3, "x" ,null,[1] ])");
    ASSERT_EQ(value.array.size(), 4U);
    EXPECT_EQ(value.array[0].number, 3.0);
    EXPECT_EQ(value.array[1].string, "x");
    EXPECT_EQ(value.array[2].type, JsonType::Null);
    EXPECT_EQ(value.array[3].array.size(), 1U);
}

TEST(Json, SortsMembersByTheBytesOfTheirKeys) {
    std::string keys;
    for (const auto& [key, member] : valueOf("{\"b\":1,\"\xC3\xA9\":2,\"a\":3,\"ab\":4,\"\":5,\"B\":6}").object) {
        keys += "[" + key + "]";
    }
    EXPECT_EQ(keys, "[][B][a][ab][b][\xC3\xA9]");
    EXPECT_EQ(valueOf(R"({"a\u0000\n":1})").object.begin()->first, "a\0\n"s);
}

TEST(Json, KeepsTheFirstOfADuplicateKey) {
    const JsonValue value = valueOf(R"({"a":1,"z":2,"\u0061":[3],"m":4,"z":5})");
    ASSERT_EQ(value.object.size(), 3U);
    EXPECT_EQ(value.object.at("a").number, 1.0);
    EXPECT_TRUE(value.object.at("a").array.empty());
    EXPECT_EQ(value.object.at("z").number, 2.0);
}

} // namespace

TEST(JsonPlaces, AreThoseOfEveryValueInTheOrderOfTheText) {
    std::vector<JsonPlace> places;
    const std::string text = R"( {"a": [1, "x"], "b" : {}, "a": null} )";
    ASSERT_TRUE(JsonParser::parse(text, places).ok);
    std::vector<std::string> found;
    for (const JsonPlace& place : places) {
        found.push_back(text.substr(place.keyBegin, place.keyEnd - place.keyBegin) + '=' +
                        text.substr(place.begin, place.end - place.begin) + " in " +
                        std::to_string(static_cast<int>(place.parent)));
    }
    EXPECT_EQ(found, (std::vector<std::string>{R"(={"a": [1, "x"], "b" : {}, "a": null} in -1)", R"("a"=[1, "x"] in 0)",
                                               "=1 in 1", R"(="x" in 1)", R"("b"={} in 0)", R"("a"=null in 0)"}));
}

TEST(JsonPlaces, ErrorIsPlacedWhereItWasNoticed) {
    std::vector<JsonPlace> places;
    EXPECT_EQ(JsonParser::parse(R"({"a": 1 "b": 2})", places).errorOffset, 8U);
    EXPECT_EQ(JsonParser::parse("", places).errorOffset, 0U);
}
