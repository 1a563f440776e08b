#include "config/names.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

namespace {

TEST(NormalizeName, RemovesWhiteSpaceAndUpperCasesAsciiLetters) {
    EXPECT_EQ(normalizeName("  ap\tmas ter\r\n a\vb\fc "), "APMASTERABC");
    EXPECT_EQ(normalizeName(" \t\n\v\f\r"), "");
    EXPECT_EQ(normalizeName(std::string_view("a \0 b", 5)), std::string("A\0B", 3));
    EXPECT_EQ(normalizeName("\xE4\xC4\x80\xA0z{`@[Z"), "\xE4\xC4\x80\xA0Z{`@[Z");
}

TEST(NormalizeBoardId, RemovesOnePrefixAfterTheWhiteSpace) {
    const std::pair<const char*, const char*> cases[] = {{" 0x00 11 aa\tbb ", "0011AABB"},
                                                         {"0Xabc", "ABC"},
                                                         {"abc", "ABC"},
                                                         {"0 x12", "12"},
                                                         {"\n0\tX 12", "12"},
                                                         {"0x0x12", "0X12"},
                                                         {"120x34", "120X34"},
                                                         {"x12", "X12"},
                                                         {"0x", ""},
                                                         {" 0 X ", ""},
                                                         {"", ""},
                                                         {"0", "0"}};
    for (const auto& [text, id] : cases) {
        EXPECT_EQ(normalizeBoardId(text), id) << text;
    }
}

} // namespace
