#include "tests/unit/wire/wire_session_fixture.h"

#include <atomic>
#include <thread>

namespace {

using std::chrono::milliseconds;

constexpr int tinyBuffer = 2048;
constexpr std::size_t blockSize = 8192;

class LinkLoss : public SessionTest {
protected:
    /// What the peer reads while this end dispatches, which also sends what waits.
    PeerBytes readWhileDispatching(std::size_t size) {
        std::atomic<bool> done{false};
        std::thread dispatcher([&] {
            while (!done) {
                dispatch();
            }
        });
        PeerBytes bytes = peer->read(size);
        done = true;
        dispatcher.join();
        return bytes;
    }

    /// Whether the link outlives a peer that reads for longer than the limit in all, but never pauses for that long.
    bool outlivesASlowReader(milliseconds stall) {
        connect({.stall = stall}, tinyBuffer);
        for (std::uint32_t i = 0; i < 40; ++i) {
            setData(i, blockSize);
        }
        const auto end = std::chrono::steady_clock::now() + stall + stall / 4;
        while (std::chrono::steady_clock::now() < end && readWhileDispatching(4096).size() == 4096) {
            std::this_thread::sleep_for(stall / 40);
        }
        return dispatch() == simConnectOk;
    }
};

INSTANTIATE_TEST_SUITE_P(Transports, LinkLoss, testing::ValuesIn(transports()), transportName);

TEST_P(LinkLoss, AllMessagesBeforeTheEndAreHandedOutFirstUnknownOnesToo) {
    connect();
    std::vector<PeerBytes> sent;
    for (std::uint32_t id = 1; id <= 200; ++id) {
        sent.push_back(simulatorMessage(id, PeerBytes(id)));
        ASSERT_TRUE(peer->send(sent.back()));
    }
    peer->close();
    // So that the first dispatch most likely finds both.
    std::this_thread::sleep_for(milliseconds(20));
    ASSERT_TRUE(dispatchUntil(sent.size()));
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
    EXPECT_EQ(log.messages, sent);
}

TEST_P(LinkLoss, EveryCallAfterTheEndFailsAlike) {
    connect();
    peer->close();
    ASSERT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(dispatch(), simConnectRemoteDisconnect);
        EXPECT_EQ(transmit(1), simConnectRemoteDisconnect);
    }
    EXPECT_TRUE(log.messages.empty());
    session->close();
    EXPECT_EQ(dispatch(), simConnectInvalidArgument);
    EXPECT_EQ(transmit(1), simConnectInvalidArgument);
}

TEST_P(LinkLoss, RequestReportsAReset) {
    connect();
    peer->reset();
    EXPECT_TRUE(waitUntil([&] { return transmit(1) == simConnectRemoteDisconnect; }));
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
}

TEST_P(LinkLoss, MessageSizeThatCannotBeEndsTheLinkBehindTheGoodMessages) {
    connect();
    ASSERT_TRUE(peer->send(joined({simulatorMessage(2), wireWords({11, 4, 2})})));
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
    EXPECT_EQ(log.ids(), std::vector<std::uint32_t>{2});
    EXPECT_EQ(transmit(1), simConnectRemoteDisconnect);
    EXPECT_EQ(dispatch(), simConnectRemoteDisconnect);
}

TEST_P(LinkLoss, MessageCutByTheEndOrAResetIsNotHandedOut) {
    const PeerBytes message = simulatorMessage(16, PeerBytes(100));
    for (const bool isReset : {false, true}) {
        // In its size and in its body.
        for (const std::size_t size : {3U, 60U}) {
            connect();
            ASSERT_TRUE(peer->send(std::span(message).first(size)));
            isReset ? peer->reset() : peer->close();
            EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
            EXPECT_TRUE(log.messages.empty());
        }
    }
}

TEST_P(LinkLoss, StallLosesNothingAndBlocksNobody) {
    connect({}, tinyBuffer);
    constexpr std::uint32_t blocks = 200;
    // A send that blocks would never return.
    for (std::uint32_t i = 0; i < blocks; ++i) {
        ASSERT_EQ(setData(i, blockSize), simConnectOk);
        ASSERT_EQ(dispatch(), simConnectOk);
    }
    const PeerBytes received = readWhileDispatching(blocks * (36 + blockSize));
    ASSERT_EQ(received.size(), blocks * (36 + blockSize));
    for (std::uint32_t i = 0; i < blocks; ++i) {
        const std::size_t begin = i * (36 + blockSize);
        ASSERT_EQ(MessageLog::wordOf(received, begin), 36 + blockSize);
        ASSERT_EQ(MessageLog::wordOf(received, begin + 12), i + 1);
        ASSERT_EQ(received[begin + 36 + blockSize - 1], static_cast<std::uint8_t>(i));
    }
}

TEST_P(LinkLoss, PeerThatTakesNothingForTheLimitEndsTheLinkEvenWithoutRequests) {
    connect({.stall = milliseconds(100)}, tinyBuffer);
    for (int i = 0; i < 500; ++i) {
        setData(1, blockSize);
    }
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
}

TEST_P(LinkLoss, BacklogBeyondTheLimitEndsTheLink) {
    SessionLimits limits;
    limits.backlog = 64UL * 1024UL;
    connect(limits, tinyBuffer);
    std::size_t accepted = 0;
    while (setData(1, blockSize) == simConnectOk) {
        ++accepted;
        ASSERT_LT(accepted, 10000U);
    }
    EXPECT_GE(accepted * (36 + blockSize), limits.backlog - blockSize);
    EXPECT_EQ(dispatch(), simConnectRemoteDisconnect);
}

TEST_P(LinkLoss, SlowReaderIsNoStall) {
    // A busy machine may stop for longer than a short limit, which is a stall indeed.
    milliseconds stall(500);
    while (!outlivesASlowReader(stall) && stall < std::chrono::seconds(30)) {
        stall *= 2;
    }
    EXPECT_EQ(dispatch(), simConnectOk);
}

} // namespace
