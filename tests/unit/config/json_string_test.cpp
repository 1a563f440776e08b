#include "config/json.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

std::string textOf(std::string_view json) {
    const JsonParseResult result = JsonParser::parse(json);
    EXPECT_TRUE(result.ok) << result.error;
    EXPECT_EQ(result.value.type, JsonType::String);
    return result.value.string;
}

std::string errorOf(std::string_view json) {
    return JsonParser::parse(json).error;
}

} // namespace

TEST(JsonString, ReadsPlainText) {
    EXPECT_EQ(textOf("\"\""), "");
    EXPECT_EQ(textOf("\"abc def\""), "abc def");
}

TEST(JsonString, ReadsEverySimpleEscape) {
    EXPECT_EQ(textOf(R"("\"\\\/\b\f\n\r\t")"), "\"\\/\b\f\n\r\t");
}

TEST(JsonString, KeepsTheTextAroundEscapes) {
    EXPECT_EQ(textOf(R"("ab\ncd\\ef")"), "ab\ncd\\ef");
    EXPECT_EQ(textOf(R"("\\\\")"), "\\\\");
    EXPECT_EQ(textOf(R"("\\\"")"), "\\\"");
}

TEST(JsonString, AcceptsRawControlCharacters) {
    EXPECT_EQ(textOf("\"a\nb\""), "a\nb");
    EXPECT_EQ(textOf("\"\t\r\x01\x1F\x7F\""), "\t\r\x01\x1F\x7F");
    EXPECT_EQ(textOf(std::string_view("\"a\0b\"", 5)), std::string("a\0b", 3));
}

TEST(JsonString, PassesHighBytesThroughUnchecked) {
    EXPECT_EQ(textOf("\"\xC3\xA9\""), "\xC3\xA9");
    EXPECT_EQ(textOf("\"\x80\xFF\xC3\""), "\x80\xFF\xC3");
}

TEST(JsonString, KeepsEveryRawByteButQuoteAndBackslash) {
    for (int byte = 0; byte < 256; ++byte) {
        const char raw = static_cast<char>(byte);
        if (raw == '"' || raw == '\\') {
            continue;
        }
        EXPECT_EQ(textOf(std::string("\"") + raw + "\""), std::string(1, raw)) << byte;
    }
}

TEST(JsonString, ReadsAsciiUnicodeEscapes) {
    EXPECT_EQ(textOf(R"("\u0041")"), "A");
    EXPECT_EQ(textOf(R"("\u007F")"), "\x7F");
    EXPECT_EQ(textOf(R"("x\u000Ay")"), "x\ny");
}

TEST(JsonString, AcceptsHexadecimalDigitsOfEitherCase) {
    EXPECT_EQ(textOf(R"("\u004a\u004B\u006d\u006E")"), "JKmn");
}

TEST(JsonString, AZeroEscapePutsAZeroByteInside) {
    EXPECT_EQ(textOf(R"("a\u0000b")"), std::string("a\0b", 3));
}

TEST(JsonString, CodesAboveAsciiBecomeOneQuestionMark) {
    EXPECT_EQ(textOf(R"("\u0080")"), "?");
    EXPECT_EQ(textOf(R"("\u00e9")"), "?");
    EXPECT_EQ(textOf(R"("\uFFFF")"), "?");
}

TEST(JsonString, SurrogatePairsBecomeTwoQuestionMarks) {
    EXPECT_EQ(textOf(R"("\uD83D\uDE00")"), "??");
}

TEST(JsonString, ReadsOnlyFourDigitsOfAnEscape) {
    EXPECT_EQ(textOf(R"("\u00411")"), "A1");
}

TEST(JsonString, RefusesTooFewBytesBehindAnEscape) {
    for (const char* json : {R"("\u)", R"("\u0)", R"("\u00)", R"("\u004)"}) {
        EXPECT_EQ(errorOf(json), "Invalid unicode escape") << json;
    }
}

TEST(JsonString, RefusesNonHexadecimalDigits) {
    for (const char* json : {R"("\u00g0")", R"("\u004")", R"("\u-041")", R"("\u+041")", R"("\u 041")", R"("\u0x41")",
                             R"("\u004 ")", R"("\uD83\uDE00")"}) {
        EXPECT_EQ(errorOf(json), "Invalid unicode escape") << json;
    }
}

TEST(JsonString, AnEscapeMayEndWithTheText) {
    EXPECT_EQ(errorOf(R"("\u0041)"), "Unterminated string");
}

TEST(JsonString, RefusesUnknownEscapeLetters) {
    for (const char* json : {R"("\a")", R"("\v")", R"("\0")", R"("\x41")", R"("\'")", R"("\U0041")", R"("\N")",
                             "\"\\\n\"", "\"\\\xC3\""}) {
        EXPECT_EQ(errorOf(json), "Invalid escape character") << json;
    }
    EXPECT_EQ(errorOf(std::string_view("\"\\\0\"", 4)), "Invalid escape character");
}

TEST(JsonString, RefusesABackslashAtTheEndOfTheText) {
    EXPECT_EQ(errorOf("\"\\"), "Invalid escape sequence");
    EXPECT_EQ(errorOf("\"abc\\"), "Invalid escape sequence");
}

TEST(JsonString, IsUnterminatedAtTheEndOfTheText) {
    EXPECT_EQ(errorOf("\""), "Unterminated string");
    EXPECT_EQ(errorOf("\"abc"), "Unterminated string");
    EXPECT_EQ(errorOf("\"abc\\\""), "Unterminated string");
    EXPECT_EQ(errorOf("{\"abc"), "Unterminated string");
}

TEST(JsonString, KeysReadLikeAnyString) {
    const JsonParseResult result = JsonParser::parse("{\"a\\u0000\\n\xC3\xA9\":1}");
    ASSERT_TRUE(result.ok);
    EXPECT_EQ(result.value.object.begin()->first, std::string("a\0\n\xC3\xA9", 5));
    EXPECT_EQ(errorOf(R"({"\q":1})"), "Invalid escape character");
}

TEST(JsonString, LongTextsKeepEveryByte) {
    const std::string run(100000, 'x');
    EXPECT_EQ(textOf("\"" + run + "\\n" + run + "\""), run + "\n" + run);
}
