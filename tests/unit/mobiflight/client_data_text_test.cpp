#include "mobiflight/client_data_text.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr const char* none = "none";

std::string read(const Bytes& block, bool numbersOnly = false) {
    return lvarText(block.data(), static_cast<std::uint32_t>(block.size()), numbersOnly).value_or(none);
}

} // namespace

TEST(ClientDataText, EndsAtTheFirstZeroOrWithTheBlock) {
    const Bytes block{'a', 'b', 0, 'c'};
    EXPECT_EQ(blockText(block.data(), 4), "ab");
    EXPECT_EQ(blockText(block.data(), 2), "ab");
    EXPECT_EQ(blockText(block.data(), 0), "");
    EXPECT_EQ(blockText(nullptr, 4), "");
}

TEST(ClientDataText, OfAVariableIsTextOrANumberBehindAZero) {
    const struct {
        Bytes block;
        std::string text;
    } rows[] = {
        {{'0', '.', '5', 0, 'x'}, "0.5"},
        {Bytes(4096, 'a'), std::string(4096, 'a')},
        // A number whose first byte isn't zero is taken as text.
        {{0xCD, 0xCC, 0xCC, 0x3D}, "\xCD\xCC\xCC="},
        {{0x01, 0x00, 0x40, 0x3F}, "\x01"},
        {{0x00, 0x00, 0x40, 0x3F}, "0.750000"},
        {{0x00, 0x00, 0x40, 0x3F, 0xFF, 0xFF}, "0.750000"},
        {{0x00, 0x00, 0x00, 0xBF}, "-0.500000"},
        {{0x00, 0x00, 0x00, 0x00}, "0.000000"},
        {{0x00, 0x00, 0x00, 0x80}, "-0.000000"},
        {{0x00, 0x01, 0x00, 0x00}, "0.000000"},
        {{0x00, 0xFF, 0x7F, 0x7F}, "340277174624079928635746076935438991360.000000"},
        {{0x00, 0xFF, 0x7F, 0xFF}, "-340277174624079928635746076935438991360.000000"},
        // Infinities, NaN, too short.
        {{0x00, 0x00, 0x80, 0x7F}, none},
        {{0x00, 0x00, 0x80, 0xFF}, none},
        {{0x00, 0x00, 0xC0, 0x7F}, none},
        {{0, 0, 0}, none},
        {{}, none},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(read(row.block), row.text) << "row " << &row - rows;
    }
    EXPECT_FALSE(lvarText(nullptr, 4, false));
}

TEST(ClientDataText, OfAVariableIsAlwaysANumberWhenThatIsSet) {
    EXPECT_EQ(read({'3', '3', '3', '?', 'x'}, true), "0.700000");
    EXPECT_EQ(read({0, 0, 0xC8, 0x42}, true), "100.000000");
    EXPECT_EQ(read({'0', '.', '5'}, true), none);
}
