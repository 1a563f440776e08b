#include "tests/unit/wire/wire_session_fixture.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace {

class WireSessionTest : public SessionTest {};

INSTANTIATE_TEST_SUITE_P(Transports, WireSessionTest, testing::ValuesIn(transports()), transportName);

class StreamTest : public SessionTest {};

INSTANTIATE_TEST_SUITE_P(Transports, StreamTest, testing::ValuesIn(transports()), transportName);

TEST_P(StreamTest, SleepsWhileNoDataComes) {
    constexpr std::chrono::milliseconds limit{40};
    peer = std::make_unique<LoopbackPeer>(GetParam());
    ByteStream stream = connectToPeer();
    std::array<std::uint8_t, 1> room{};
    ASSERT_EQ(stream.receive(room).status, TransferStatus::WouldBlock);
    const auto begin = std::chrono::steady_clock::now();
    stream.awaitData(limit);
    // It may return earlier, but not at once.
    EXPECT_GE(std::chrono::steady_clock::now() - begin, limit / 2);
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

TEST_P(WireSessionTest, ReadsASimulatorThatNeverStopsInPiecesAndALargeMessageWhole) {
    connect();
    constexpr std::size_t count = 100;
    const PeerBytes large = simulatorMessage(16, PeerBytes(900000, 0x17));
    std::thread sender([&] {
        for (std::size_t i = 1; i < count; ++i) {
            peer->send(simulatorMessage(16, PeerBytes(60000)));
        }
        peer->send(large);
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
    ASSERT_EQ(before, count);
    EXPECT_EQ(log.messages.back(), large);
    // At most sixteen reads of 64 KiB, and what was left of the dispatch before.
    EXPECT_LE(most, 18U);
}

} // namespace
