#include "tests/unit/wire/wire_session_fixture.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <thread>

namespace {

class SimConnectSessionTest : public SessionTest {};

INSTANTIATE_TEST_SUITE_P(Transports, SimConnectSessionTest, testing::ValuesIn(transports()), transportName);

TEST_P(SimConnectSessionTest, CountsSendIdsFromOne) {
    connect();
    for (std::uint32_t i = 1; i <= 3; ++i) {
        ASSERT_EQ(transmit(i), simConnectOk);
        EXPECT_EQ(MessageLog::wordOf(peer->read(36), 12), i);
    }
}

TEST_P(SimConnectSessionTest, SendsARequestAtOnceWithoutADispatch) {
    connect();
    ASSERT_EQ(transmit(7), simConnectOk);
    EXPECT_EQ(peer->read(36).size(), 36U);
}

TEST_P(SimConnectSessionTest, DispatchOfAnEmptyQueueSucceeds) {
    connect();
    EXPECT_EQ(dispatch(), simConnectOk);
    EXPECT_TRUE(log.messages.empty());
}

TEST_P(SimConnectSessionTest, DispatchHandsOutAllMessagesInOrder) {
    connect();
    std::vector<std::uint8_t> segment;
    std::vector<std::uint32_t> expected(100);
    std::iota(expected.begin(), expected.end(), 100U);
    for (const std::uint32_t id : expected) {
        const PeerBytes message = simulatorMessage(id, PeerBytes(id));
        segment.insert(segment.end(), message.begin(), message.end());
    }
    ASSERT_TRUE(peer->send(segment));
    ASSERT_TRUE(dispatchUntil(100));
    EXPECT_EQ(log.ids(), expected);
    EXPECT_EQ(log.messages.back(), simulatorMessage(199, PeerBytes(199)));
}

TEST_P(SimConnectSessionTest, MessageThatComesByteByByteIsHandedOutWhole) {
    connect();
    const PeerBytes message = simulatorMessage(2, PeerBytes(296, 0x42));
    for (std::size_t i = 0; i < message.size(); ++i) {
        ASSERT_TRUE(log.messages.empty());
        ASSERT_TRUE(peer->send(std::span(message).subspan(i, 1)));
        ASSERT_EQ(dispatch(), simConnectOk);
    }
    ASSERT_TRUE(dispatchUntil(1));
    EXPECT_EQ(log.messages.front(), message);
}

TEST_P(SimConnectSessionTest, MessageLargerThanOneReadIsHandedOutWhole) {
    connect();
    const PeerBytes message = simulatorMessage(16, PeerBytes(900000, 0x17));
    std::thread sender([&] { peer->send(message); });
    const bool came = dispatchUntil(1);
    sender.join();
    ASSERT_TRUE(came);
    EXPECT_EQ(log.messages.front(), message);
}

TEST_P(SimConnectSessionTest, UnknownMessagesAreHandedOutToo) {
    connect();
    ASSERT_TRUE(peer->send(simulatorMessage(0xFFFFFFFF)));
    ASSERT_TRUE(dispatchUntil(1));
    EXPECT_EQ(log.messages.front(), simulatorMessage(0xFFFFFFFF));
}

TEST_P(SimConnectSessionTest, RequestsMayBeMadeFromInsideTheCallback) {
    connect();
    log.onMessage = [&](const auto&) { EXPECT_EQ(transmit(5), simConnectOk); };
    ASSERT_TRUE(peer->send(simulatorMessage(2)));
    ASSERT_TRUE(dispatchUntil(1));
    EXPECT_EQ(peer->read(36).size(), 36U);
}

TEST_P(SimConnectSessionTest, DispatchFromInsideTheCallbackDoesNothing) {
    connect();
    MessageLog inner;
    log.onMessage = [&](const auto&) { EXPECT_EQ(session->dispatch(&MessageLog::dispatchProc, &inner), simConnectOk); };
    PeerBytes two = simulatorMessage(2);
    const PeerBytes second = simulatorMessage(3);
    two.insert(two.end(), second.begin(), second.end());
    ASSERT_TRUE(peer->send(two));
    ASSERT_TRUE(dispatchUntil(2));
    EXPECT_TRUE(inner.messages.empty());
    EXPECT_EQ(log.ids(), (std::vector<std::uint32_t>{2, 3}));
}

TEST_P(SimConnectSessionTest, CloseInsideTheCallbackDropsTheMessagesBehind) {
    connect();
    log.onMessage = [&](const auto&) { session->close(); };
    PeerBytes two = simulatorMessage(3);
    const PeerBytes second = simulatorMessage(8);
    two.insert(two.end(), second.begin(), second.end());
    ASSERT_TRUE(peer->send(two));
    ASSERT_TRUE(dispatchUntil(1));
    EXPECT_EQ(log.ids(), std::vector<std::uint32_t>{3});
    EXPECT_EQ(dispatch(), simConnectInvalidArgument);
    EXPECT_EQ(transmit(1), simConnectInvalidArgument);
    EXPECT_EQ(log.messages.size(), 1U);
}

TEST_P(SimConnectSessionTest, CloseStillSendsTheLastRequestsOverUnreadMessages) {
    connect();
    ASSERT_TRUE(peer->send(simulatorMessage(16, PeerBytes(5000))));
    for (std::uint32_t i = 0; i < 50; ++i) {
        ASSERT_EQ(transmit(i), simConnectOk);
    }
    session->close();
    EXPECT_EQ(peer->read(50UL * 36UL).size(), 50UL * 36UL);
    EXPECT_TRUE(peer->readEnd());
}

TEST_P(SimConnectSessionTest, CloseTwiceIsHarmless) {
    connect();
    session->close();
    session->close();
    EXPECT_EQ(transmit(1), simConnectInvalidArgument);
}

TEST_P(SimConnectSessionTest, AThrowingCallbackLeavesTheSessionUsable) {
    connect();
    log.onMessage = [](const auto&) { throw std::runtime_error("callback"); };
    ASSERT_TRUE(peer->send(simulatorMessage(2)));
    EXPECT_TRUE(waitUntil([&] {
        try {
            dispatch();
            return false;
        } catch (const std::runtime_error&) {
            return true;
        }
    }));
    log.onMessage = nullptr;
    ASSERT_TRUE(peer->send(simulatorMessage(3)));
    ASSERT_TRUE(dispatchUntil(2));
    EXPECT_EQ(log.ids(), (std::vector<std::uint32_t>{2, 3}));
}

TEST_P(SimConnectSessionTest, ReadsASimulatorThatNeverStopsInPieces) {
    connect();
    PeerBytes flood;
    while (flood.size() < 6UL * 1024UL * 1024UL) {
        const PeerBytes message = simulatorMessage(16, PeerBytes(60000));
        flood.insert(flood.end(), message.begin(), message.end());
    }
    std::thread sender([&] { peer->send(flood); });
    std::size_t most = 0;
    std::size_t total = 0;
    waitUntil([&] {
        log.messages.clear();
        EXPECT_EQ(dispatch(), simConnectOk);
        most = std::max(most, log.messages.size() * 60012);
        total += log.messages.size() * 60012;
        return total >= flood.size();
    });
    sender.join();
    EXPECT_EQ(total, flood.size());
    // A piece of the flood a dispatch, and what was left of the one before.
    EXPECT_LE(most, 1200000U);
}

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
