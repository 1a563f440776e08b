#include "wire/outbound_buffer.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

TEST(OutboundBuffer, GivesWhatWasAppendedAndNotYetConsumed) {
    OutboundBuffer buffer;
    EXPECT_TRUE(buffer.pending().empty());
    std::vector<std::uint8_t> read;
    for (std::uint8_t i = 0; i < 200; ++i) {
        buffer.tail().push_back(i);
        if (i % 3 == 2) {
            const auto pending = buffer.pending();
            read.insert(read.end(), pending.begin(), pending.begin() + 2);
            buffer.consume(2);
        }
    }
    const auto rest = buffer.pending();
    read.insert(read.end(), rest.begin(), rest.end());
    buffer.consume(rest.size());
    EXPECT_TRUE(buffer.pending().empty());
    std::vector<std::uint8_t> expected(200);
    std::iota(expected.begin(), expected.end(), std::uint8_t{0});
    EXPECT_EQ(read, expected);
}

TEST(OutboundBuffer, KeepsItsMemory) {
    OutboundBuffer buffer;
    buffer.tail().reserve(1024);
    const std::uint8_t* const memory = buffer.tail().data();
    for (int i = 0; i < 1000; ++i) {
        buffer.tail().resize(buffer.tail().size() + 300);
        buffer.consume(300);
    }
    EXPECT_EQ(buffer.tail().data(), memory);
    EXPECT_EQ(buffer.tail().capacity(), 1024U);
}

} // namespace
