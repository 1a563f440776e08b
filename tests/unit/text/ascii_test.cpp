#include "text/ascii.h"

#include <gtest/gtest.h>

namespace {

TEST(Ascii, KnowsLettersAndWhiteSpaceOfAsciiOnly) {
    for (int number = 0; number < 256; ++number) {
        const char byte = static_cast<char>(number);
        const bool isUpper = byte >= 'A' && byte <= 'Z';
        const bool isLower = byte >= 'a' && byte <= 'z';
        EXPECT_EQ(isSpace(byte), byte == ' ' || (byte >= '\t' && byte <= '\r')) << number;
        EXPECT_EQ(toLower(byte), isUpper ? static_cast<char>(byte + 32) : byte) << number;
        EXPECT_EQ(toUpper(byte), isLower ? static_cast<char>(byte - 32) : byte) << number;
    }
}

TEST(Ascii, ComparesAndChangesTextsOfAnyBytes) {
    EXPECT_EQ(lowerCased("Aa\xC4Z[@"), "aa\xC4z[@");
    EXPECT_EQ(upperCased("Aa\xE4z{`"), "AA\xE4Z{`");
    EXPECT_TRUE(equalsIgnoringCase("Panel-1", "pANEL-1"));
    EXPECT_TRUE(equalsIgnoringCase("", ""));
    EXPECT_FALSE(equalsIgnoringCase("panel", "panels"));
    EXPECT_FALSE(equalsIgnoringCase("panels", "panel"));
    EXPECT_FALSE(equalsIgnoringCase("\xC4", "\xE4"));
    EXPECT_FALSE(equalsIgnoringCase("@", "`"));
}

TEST(Ascii, TrimsBothEnds) {
    EXPECT_EQ(trimmed(" \t\r\n\v\fa b \n"), "a b");
    EXPECT_EQ(trimmed("a"), "a");
    EXPECT_EQ(trimmed(" \n "), "");
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(trimmed(" x\n", " "), "x\n");
}

} // namespace
