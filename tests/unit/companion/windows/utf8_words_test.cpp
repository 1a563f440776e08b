#include "companion/cli/windows/utf8_words.h"

#include <gtest/gtest.h>

TEST(Utf8Words, KeepsWordsInUtf8AndConvertsOthersFromTheCodePage) {
    // The tests run with code page 1252.
    for (const auto& [text, utf8] : std::vector<std::pair<std::string, std::string>>{
             {"", ""},
             {"plain", "plain"},
             {"\xC3\xA4\n", "\xC3\xA4\n"},
             {"\xE4 b", "\xC3\xA4 b"},
             {"a \xE2\x9C\x93 C:\\J\xFCrgen\n\x80", "a \xE2\x9C\x93 C:\\J\xC3\xBCrgen\n\xE2\x82\xAC"},
         }) {
        EXPECT_EQ(utf8Words(text), utf8);
    }
}
