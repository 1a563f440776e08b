#include "wire/message_reader.h"

#include "tests/support/loopback_peer.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

void feed(MessageReader& reader, std::span<const std::uint8_t> bytes) {
    const auto room = reader.prepare(bytes.size());
    std::copy(bytes.begin(), bytes.end(), room.begin());
    reader.commit(bytes.size());
}

PeerBytes nextOf(MessageReader& reader) {
    const auto message = reader.next();
    return message ? PeerBytes(message->begin(), message->end()) : PeerBytes();
}

PeerBytes message(std::uint32_t i) {
    return simulatorMessage(i, PeerBytes(i, 0x5A));
}

TEST(MessageReader, GivesTheSameMessagesInPiecesOfAnySize) {
    PeerBytes stream;
    for (std::uint32_t i = 0; i < 100; ++i) {
        stream = joined({stream, message(i)});
    }
    // A byte, parts of a size, a head with its message's begin, all at once.
    for (const std::size_t pieceSize : {std::size_t{1}, std::size_t{3}, std::size_t{17}, stream.size()}) {
        MessageReader reader(12);
        std::uint32_t count = 0;
        for (std::span<const std::uint8_t> rest(stream); !rest.empty();) {
            const auto piece = rest.first(std::min(pieceSize, rest.size()));
            feed(reader, piece);
            for (PeerBytes next = nextOf(reader); !next.empty(); next = nextOf(reader)) {
                ASSERT_EQ(next, message(count++)) << pieceSize;
            }
            rest = rest.subspan(piece.size());
        }
        EXPECT_EQ(count, 100U) << pieceSize;
        EXPECT_FALSE(reader.broken());
    }
}

TEST(MessageReader, TakesTheSmallestAndTheLargestMessage) {
    MessageReader reader(12);
    feed(reader, simulatorMessage(3));
    EXPECT_EQ(nextOf(reader).size(), 12U);
    feed(reader, simulatorMessage(3, PeerBytes(1024 * 1024 - 12)));
    EXPECT_EQ(nextOf(reader).size(), 1024U * 1024U);
    EXPECT_FALSE(reader.broken());
}

TEST(MessageReader, SizeThatNoMessageHasBreaksTheStreamForEver) {
    struct Row {
        std::size_t smallest;
        std::uint32_t size;
    };
    // The requests' heads are longer than the messages'.
    for (const Row& row : {Row{12, 0}, Row{12, 1}, Row{12, 11}, Row{12, 1024 * 1024 + 1}, Row{12, 0x7FFFFFFF},
                           Row{12, 0xFFFFFFFF}, Row{16, 15}}) {
        MessageReader reader(row.smallest);
        // What came before it is good, and its size alone is enough.
        feed(reader, joined({message(4), wireWords({row.size})}));
        EXPECT_EQ(nextOf(reader), message(4));
        EXPECT_FALSE(reader.broken());
        EXPECT_FALSE(reader.next());
        EXPECT_TRUE(reader.broken()) << row.size;
        feed(reader, message(5));
        EXPECT_FALSE(reader.next());
        EXPECT_TRUE(reader.broken()) << row.size;
    }
}

} // namespace
