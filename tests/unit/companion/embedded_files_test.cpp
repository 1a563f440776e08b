#include "companion/embedded/embedded_files.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>

namespace {

// "one page\n", as gzip packs it.
constexpr std::array<unsigned char, 29> packedPage{0x1f, 0x8b, 0x08, 0x00, 0x00, 0x00, 0x00, 0x00, 0x02, 0x03,
                                                   0xcb, 0xcf, 0x4b, 0x55, 0x28, 0x48, 0x4c, 0x4f, 0xe5, 0x02,
                                                   0x00, 0xd6, 0x55, 0x1f, 0xb1, 0x09, 0x00, 0x00, 0x00};

TEST(EmbeddedFilesTest, AreUnpackedByName) {
    const PackedFile files[] = {{"first.txt", packedPage, 9}, {"second.txt", packedPage, 9}};
    const EmbeddedFiles expected{{"first.txt", "one page\n"}, {"second.txt", "one page\n"}};
    EXPECT_EQ(unpack(files), expected);
}

TEST(EmbeddedFilesTest, ThrowForDamage) {
    auto changed = packedPage;
    changed[12] ^= 1;
    const PackedFile cases[] = {{"changed", changed, 9},
                                {"cut", std::span(packedPage).first(20), 9},
                                {"size too small", packedPage, 8},
                                {"size too large", packedPage, 10}};
    for (const PackedFile& file : cases) {
        EXPECT_THROW(unpack({&file, 1}), std::logic_error) << file.name;
    }
}

} // namespace
