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

TEST(MessageReader, GivesNothingBeforeAnythingCame) {
    MessageReader reader(12);
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.broken());
}

TEST(MessageReader, GivesManyMessagesOfOnePiece) {
    MessageReader reader(12);
    PeerBytes piece;
    for (std::uint32_t i = 0; i < 100; ++i) {
        const PeerBytes message = simulatorMessage(16, PeerBytes(i, 0x5A));
        piece.insert(piece.end(), message.begin(), message.end());
    }
    feed(reader, piece);
    for (std::uint32_t i = 0; i < 100; ++i) {
        EXPECT_EQ(nextOf(reader), simulatorMessage(16, PeerBytes(i, 0x5A)));
    }
    EXPECT_FALSE(reader.next());
}

TEST(MessageReader, PeekGivesAMessageWithoutTakingIt) {
    MessageReader reader(12);
    EXPECT_FALSE(reader.peek());
    const PeerBytes message = simulatorMessage(2, PeerBytes(20, 0x11));
    feed(reader, std::span(message).first(20));
    EXPECT_FALSE(reader.peek());
    feed(reader, std::span(message).subspan(20));
    for (int i = 0; i < 2; ++i) {
        const auto peeked = reader.peek();
        ASSERT_TRUE(peeked);
        EXPECT_EQ(PeerBytes(peeked->begin(), peeked->end()), message);
    }
    EXPECT_EQ(nextOf(reader), message);
    EXPECT_FALSE(reader.peek());
    feed(reader, wireWords({11, 4, 2}));
    EXPECT_FALSE(reader.peek());
    EXPECT_TRUE(reader.broken());
}

TEST(MessageReader, PutsAMessageTogetherByteByByte) {
    MessageReader reader(12);
    const PeerBytes message = simulatorMessage(2, PeerBytes(296, 0x11));
    for (std::size_t i = 0; i + 1 < message.size(); ++i) {
        feed(reader, std::span(message).subspan(i, 1));
        ASSERT_FALSE(reader.next());
    }
    feed(reader, std::span(message).last(1));
    EXPECT_EQ(nextOf(reader), message);
}

TEST(MessageReader, KeepsTheBeginOfAMessageBehindAWholeOne) {
    MessageReader reader(12);
    const PeerBytes first = simulatorMessage(1, PeerBytes(20, 1));
    const PeerBytes second = simulatorMessage(2, PeerBytes(30, 2));
    PeerBytes piece = first;
    piece.insert(piece.end(), second.begin(), second.begin() + 17);
    feed(reader, piece);
    EXPECT_EQ(nextOf(reader), first);
    EXPECT_FALSE(reader.next());
    feed(reader, std::span(second).subspan(17));
    EXPECT_EQ(nextOf(reader), second);
}

TEST(MessageReader, TakesTheSmallestAndTheLargestMessage) {
    MessageReader reader(12);
    feed(reader, simulatorMessage(3));
    EXPECT_EQ(nextOf(reader).size(), 12U);
    feed(reader, simulatorMessage(3, PeerBytes(MessageReader::largestMessage - 12)));
    EXPECT_EQ(nextOf(reader).size(), MessageReader::largestMessage);
    EXPECT_FALSE(reader.broken());
}

TEST(MessageReader, IsBrokenByASizeBelowTheHead) {
    for (const std::uint32_t size : {0U, 1U, 11U}) {
        MessageReader reader(12);
        feed(reader, wireWords({size, 4, 3}));
        EXPECT_FALSE(reader.next());
        EXPECT_TRUE(reader.broken()) << size;
    }
}

TEST(MessageReader, IsBrokenByASizeBeyondAllMessagesBeforeTheRestCame) {
    for (const std::uint32_t size : {1024U * 1024U + 1U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        MessageReader reader(12);
        feed(reader, wireWords({size}));
        EXPECT_FALSE(reader.next());
        EXPECT_TRUE(reader.broken()) << size;
    }
}

TEST(MessageReader, StaysBrokenWhateverComesThen) {
    MessageReader reader(12);
    feed(reader, wireWords({11, 4, 3}));
    EXPECT_FALSE(reader.next());
    feed(reader, simulatorMessage(3));
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.broken());
}

TEST(MessageReader, GivesTheMessagesBeforeABrokenOne) {
    MessageReader reader(12);
    PeerBytes piece = simulatorMessage(3);
    const PeerBytes bad = wireWords({0});
    piece.insert(piece.end(), bad.begin(), bad.end());
    feed(reader, piece);
    EXPECT_EQ(nextOf(reader), simulatorMessage(3));
    EXPECT_FALSE(reader.broken());
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.broken());
}

TEST(MessageReader, HeadOfTheOtherSideIsItsOwnSmallestSize) {
    MessageReader reader(16);
    feed(reader, wireWords({15, 4, 0xF0000001, 1}));
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.broken());
}

} // namespace
