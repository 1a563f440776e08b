#include "config/names.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

TEST(NormalizeName, UpperCasesAsciiLetters) {
    EXPECT_EQ(normalizeName("abcXYZ_09-z"), "ABCXYZ_09-Z");
    EXPECT_EQ(normalizeName("@[`{az"), "@[`{AZ");
}

TEST(NormalizeName, RemovesWhiteSpaceWhereverItStands) {
    EXPECT_EQ(normalizeName("  ap\tmas ter\r\n"), "APMASTER");
    EXPECT_EQ(normalizeName(" a\vb\fc "), "ABC");
}

TEST(NormalizeName, GivesAnEmptyTextForNothingButWhiteSpace) {
    EXPECT_EQ(normalizeName(""), "");
    EXPECT_EQ(normalizeName(" \t\n\v\f\r"), "");
}

TEST(NormalizeName, LeavesEveryOtherByteAlone) {
    for (int byte = 0; byte < 256; ++byte) {
        const char raw = static_cast<char>(byte);
        const bool letter = raw >= 'a' && raw <= 'z';
        const bool space = raw == ' ' || (raw >= '\t' && raw <= '\r');
        if (!letter && !space) {
            EXPECT_EQ(normalizeName(std::string(1, raw)), std::string(1, raw)) << byte;
        }
    }
}

TEST(NormalizeName, KeepsZeroBytes) {
    EXPECT_EQ(normalizeName(std::string_view("a \0 b", 5)), std::string("A\0B", 3));
}

TEST(NormalizeName, IsTheSameOnceMore) {
    const std::string once = normalizeName(" Map Left\xC3\xA9 ");
    EXPECT_EQ(normalizeName(once), once);
    EXPECT_EQ(once, "MAPLEFT\xC3\xA9");
}

TEST(NormalizeBoardId, RemovesBlanksPrefixAndLowerCase) {
    EXPECT_EQ(normalizeBoardId(" 0x00 11 aa\tbb "), "0011AABB");
    EXPECT_EQ(normalizeBoardId("0Xabc"), "ABC");
    EXPECT_EQ(normalizeBoardId("abc"), "ABC");
}

TEST(NormalizeBoardId, FindsThePrefixAfterTheBlanksAreGone) {
    EXPECT_EQ(normalizeBoardId("0 x12"), "12");
    EXPECT_EQ(normalizeBoardId("\n0\tX 12"), "12");
}

TEST(NormalizeBoardId, DropsOnlyOnePrefixAndOnlyAtTheFront) {
    EXPECT_EQ(normalizeBoardId("0x0x12"), "0X12");
    EXPECT_EQ(normalizeBoardId("120x34"), "120X34");
    EXPECT_EQ(normalizeBoardId("x12"), "X12");
}

TEST(NormalizeBoardId, MayLeaveNothing) {
    EXPECT_EQ(normalizeBoardId("0x"), "");
    EXPECT_EQ(normalizeBoardId(" 0 X "), "");
    EXPECT_EQ(normalizeBoardId(""), "");
    EXPECT_EQ(normalizeBoardId("0"), "0");
}
