#include "tests/unit/wire/wire_session_fixture.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

namespace {

class WireSessionTest : public SessionTest {};

INSTANTIATE_TEST_SUITE_P(Transports, WireSessionTest, testing::ValuesIn(transports()), transportName);

TEST_P(WireSessionTest, RequestsLeaveAtOnceAndCountTheirSendIdsFromOne) {
    connect();
    for (std::uint32_t i = 1; i <= 3; ++i) {
        ASSERT_EQ(transmit(i), simConnectOk);
        EXPECT_EQ(MessageLog::wordOf(peer->read(36), 12), i);
    }
}

TEST_P(WireSessionTest, DispatchOfAnEmptyQueueSucceeds) {
    connect();
    EXPECT_EQ(dispatch(), simConnectOk);
    EXPECT_TRUE(log.messages.empty());
}

TEST_P(WireSessionTest, DispatchHandsOutAllMessagesInOrderUnknownOnesToo) {
    connect();
    std::vector<PeerBytes> expected;
    for (std::uint32_t id = 100; id < 200; ++id) {
        expected.push_back(simulatorMessage(id, PeerBytes(id)));
        ASSERT_TRUE(peer->send(expected.back()));
    }
    ASSERT_TRUE(dispatchUntil(100));
    EXPECT_EQ(log.messages, expected);
}

TEST_P(WireSessionTest, MessageLargerThanOneReadIsHandedOutWhole) {
    connect();
    const PeerBytes message = simulatorMessage(16, PeerBytes(900000, 0x17));
    std::thread sender([&] { peer->send(message); });
    const bool came = dispatchUntil(1);
    sender.join();
    ASSERT_TRUE(came);
    EXPECT_EQ(log.messages.front(), message);
}

TEST_P(WireSessionTest, RequestsMayBeMadeFromInsideTheCallback) {
    connect();
    log.onMessage = [&](const auto&) { EXPECT_EQ(transmit(5), simConnectOk); };
    ASSERT_TRUE(peer->send(simulatorMessage(2)));
    ASSERT_TRUE(dispatchUntil(1));
    EXPECT_EQ(peer->read(36).size(), 36U);
}

TEST_P(WireSessionTest, DispatchFromInsideTheCallbackDoesNothing) {
    connect();
    MessageLog inner;
    log.onMessage = [&](const auto&) { EXPECT_EQ(session->dispatch(&MessageLog::dispatchProc, &inner), simConnectOk); };
    ASSERT_TRUE(peer->send(joined({simulatorMessage(2), simulatorMessage(3)})));
    ASSERT_TRUE(dispatchUntil(2));
    EXPECT_TRUE(inner.messages.empty());
    EXPECT_EQ(log.ids(), (std::vector<std::uint32_t>{2, 3}));
}

TEST_P(WireSessionTest, CloseInsideTheCallbackDropsTheMessagesBehind) {
    connect();
    log.onMessage = [&](const auto&) { session->close(); };
    ASSERT_TRUE(peer->send(joined({simulatorMessage(3), simulatorMessage(8)})));
    ASSERT_TRUE(dispatchUntil(1));
    EXPECT_EQ(log.ids(), std::vector<std::uint32_t>{3});
    EXPECT_EQ(dispatch(), simConnectInvalidArgument);
    EXPECT_EQ(transmit(1), simConnectInvalidArgument);
    EXPECT_EQ(log.messages.size(), 1U);
}

TEST_P(WireSessionTest, CloseStillSendsTheLastRequestsOverUnreadMessagesAndMayBeRepeated) {
    connect();
    ASSERT_TRUE(peer->send(simulatorMessage(16, PeerBytes(5000))));
    for (std::uint32_t i = 0; i < 50; ++i) {
        ASSERT_EQ(transmit(i), simConnectOk);
    }
    session->close();
    session->close();
    EXPECT_EQ(peer->read(50UL * 36UL).size(), 50UL * 36UL);
    EXPECT_TRUE(peer->readEnd());
}

TEST_P(WireSessionTest, AThrowingCallbackLeavesTheSessionUsable) {
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

TEST_P(WireSessionTest, ReadsASimulatorThatNeverStopsInPieces) {
    connect();
    constexpr std::size_t count = 100;
    std::thread sender([&] {
        for (std::size_t i = 0; i < count; ++i) {
            peer->send(simulatorMessage(16, PeerBytes(60000)));
        }
    });
    std::size_t most = 0;
    std::size_t before = 0;
    waitUntil([&] {
        EXPECT_EQ(dispatch(), simConnectOk);
        most = std::max(most, log.messages.size() - before);
        before = log.messages.size();
        return before == count;
    });
    sender.join();
    EXPECT_EQ(before, count);
    // At most sixteen reads of 64 KiB, and what was left of the dispatch before.
    EXPECT_LE(most, 18U);
}

} // namespace
