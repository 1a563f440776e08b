#include "config/names.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

TEST(NormalizeName, RemovesWhiteSpaceAndUpperCasesAsciiLetters) {
    EXPECT_EQ(normalizeName("  ap\tmas ter\r\n a\vb\fc "), "APMASTERABC");
    EXPECT_EQ(normalizeName(" \t\n\v\f\r"), "");
    EXPECT_EQ(normalizeName(std::string_view("a \0 b", 5)), std::string("A\0B", 3));
    for (int byte = 0; byte < 256; ++byte) {
        const char raw = static_cast<char>(byte);
        const bool letter = raw >= 'a' && raw <= 'z';
        const bool space = raw == ' ' || (raw >= '\t' && raw <= '\r');
        const std::string expected =
            space ? std::string() : std::string(1, letter ? static_cast<char>(raw - 'a' + 'A') : raw);
        EXPECT_EQ(normalizeName(std::string(1, raw)), expected) << byte;
    }
}

TEST(NormalizeBoardId, RemovesOnePrefixAfterTheWhiteSpace) {
    const struct {
        const char* text;
        const char* id;
    } cases[] = {{" 0x00 11 aa\tbb ", "0011AABB"},
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
    for (const auto& each : cases) {
        EXPECT_EQ(normalizeBoardId(each.text), each.id) << each.text;
    }
}

} // namespace
