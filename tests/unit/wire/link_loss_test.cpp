#include "tests/unit/wire/wire_session_fixture.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace {

using std::chrono::milliseconds;

constexpr int tinyBuffer = 2048;
constexpr std::size_t blockSize = 8192;

class SimConnectLinkLoss : public SessionTest {
protected:
    void expectBroken(const PeerBytes& bytes) {
        connect();
        PeerBytes good = simulatorMessage(2);
        good.insert(good.end(), bytes.begin(), bytes.end());
        ASSERT_TRUE(peer->send(good));
        EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
        EXPECT_EQ(log.ids(), std::vector<std::uint32_t>{2});
        EXPECT_EQ(transmit(1), simConnectRemoteDisconnect);
        EXPECT_EQ(dispatch(), simConnectRemoteDisconnect);
    }
};

INSTANTIATE_TEST_SUITE_P(Transports, SimConnectLinkLoss, testing::ValuesIn(transports()), transportName);

TEST_P(SimConnectLinkLoss, QuitBeforeTheEndIsHandedOutFirst) {
    connect();
    ASSERT_TRUE(peer->send(simulatorMessage(3)));
    peer->close();
    // Both have arrived by the time that the first dispatch looks, or the message alone.
    std::this_thread::sleep_for(milliseconds(20));
    ASSERT_EQ(dispatch(), simConnectOk);
    EXPECT_EQ(log.ids(), std::vector<std::uint32_t>{3});
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
    EXPECT_EQ(log.messages.size(), 1U);
}

TEST_P(SimConnectLinkLoss, AllMessagesBeforeTheEndAreHandedOut) {
    connect();
    for (std::uint32_t id = 1; id <= 200; ++id) {
        ASSERT_TRUE(peer->send(simulatorMessage(id, PeerBytes(200))));
    }
    peer->close();
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
    EXPECT_EQ(log.messages.size(), 200U);
}

TEST_P(SimConnectLinkLoss, EndWithoutAWordIsToldByDispatch) {
    connect();
    peer->close();
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
    EXPECT_TRUE(log.messages.empty());
}

TEST_P(SimConnectLinkLoss, ResetIsToldByDispatch) {
    connect();
    peer->reset();
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
}

TEST_P(SimConnectLinkLoss, ResetIsToldByARequest) {
    connect();
    peer->reset();
    EXPECT_TRUE(waitUntil([&] { return transmit(1) == simConnectRemoteDisconnect; }));
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
}

TEST_P(SimConnectLinkLoss, EveryCallAfterTheLossFailsAlike) {
    connect();
    peer->close();
    ASSERT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(dispatch(), simConnectRemoteDisconnect);
        EXPECT_EQ(transmit(1), simConnectRemoteDisconnect);
    }
}

TEST_P(SimConnectLinkLoss, CloseAfterTheLossIsHarmless) {
    connect();
    peer->close();
    ASSERT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
    session->close();
    EXPECT_EQ(dispatch(), simConnectInvalidArgument);
}

TEST_P(SimConnectLinkLoss, MessageSizeOfZeroEndsTheLink) {
    expectBroken(wireWords({0, 4, 2}));
}

TEST_P(SimConnectLinkLoss, MessageSizeBelowTheHeadEndsTheLink) {
    expectBroken(wireWords({11, 4, 2}));
}

TEST_P(SimConnectLinkLoss, MessageSizeAboveAnyMessageEndsTheLink) {
    expectBroken(wireWords({1024 * 1024 + 1}));
}

TEST_P(SimConnectLinkLoss, MessageSizeOfAllBitsEndsTheLink) {
    expectBroken(wireWords({0xFFFFFFFF, 4, 2}));
}

TEST_P(SimConnectLinkLoss, MessageCutByTheEndIsNotHandedOut) {
    connect();
    const PeerBytes message = simulatorMessage(16, PeerBytes(100));
    ASSERT_TRUE(peer->send(std::span(message).first(60)));
    peer->close();
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
    EXPECT_TRUE(log.messages.empty());
}

TEST_P(SimConnectLinkLoss, SizeCutByTheEndIsNotHandedOut) {
    connect();
    ASSERT_TRUE(peer->send(PeerBytes{12, 0, 0}));
    peer->close();
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
    EXPECT_TRUE(log.messages.empty());
}

TEST_P(SimConnectLinkLoss, StallLosesNothingAndBlocksNobody) {
    connect({}, tinyBuffer, tinyBuffer);
    constexpr std::uint32_t blocks = 200;
    const auto begin = std::chrono::steady_clock::now();
    for (std::uint32_t i = 0; i < blocks; ++i) {
        ASSERT_EQ(setData(i, blockSize), simConnectOk);
        ASSERT_EQ(dispatch(), simConnectOk);
    }
    // Far below what a blocking send would have waited, which is for ever.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
    PeerBytes received;
    std::thread reader([&] { received = peer->read(blocks * (36 + blockSize)); });
    std::atomic<bool> done{false};
    std::thread flusher([&] {
        while (!done) {
            dispatch();
        }
    });
    reader.join();
    done = true;
    flusher.join();
    ASSERT_EQ(received.size(), blocks * (36 + blockSize));
    for (std::uint32_t i = 0; i < blocks; ++i) {
        const std::size_t begin36 = i * (36 + blockSize);
        ASSERT_EQ(MessageLog::wordOf(received, begin36), 36 + blockSize);
        ASSERT_EQ(MessageLog::wordOf(received, begin36 + 12), i + 1);
        ASSERT_EQ(received[begin36 + 36 + blockSize - 1], static_cast<std::uint8_t>(i));
    }
}

TEST_P(SimConnectLinkLoss, PeerThatTakesNothingForTheLimitEndsTheLink) {
    SessionLimits limits;
    limits.stall = milliseconds(100);
    connect(limits, tinyBuffer, tinyBuffer);
    EXPECT_TRUE(waitUntil([&] { return setData(1, blockSize) == simConnectRemoteDisconnect; }));
    EXPECT_EQ(dispatch(), simConnectRemoteDisconnect);
}

TEST_P(SimConnectLinkLoss, StallIsNoticedByDispatchAlone) {
    SessionLimits limits;
    limits.stall = milliseconds(100);
    connect(limits, tinyBuffer, tinyBuffer);
    for (int i = 0; i < 2000; ++i) {
        setData(1, blockSize);
    }
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
}

TEST_P(SimConnectLinkLoss, BacklogBeyondTheLimitEndsTheLink) {
    SessionLimits limits;
    limits.backlog = 64UL * 1024UL;
    connect(limits, tinyBuffer, tinyBuffer);
    std::size_t accepted = 0;
    while (setData(1, blockSize) == simConnectOk) {
        ++accepted;
        ASSERT_LT(accepted, 10000U);
    }
    EXPECT_GE(accepted * (36 + blockSize), limits.backlog - blockSize);
    EXPECT_EQ(dispatch(), simConnectRemoteDisconnect);
}

TEST_P(SimConnectLinkLoss, SlowReaderIsNoStall) {
    SessionLimits limits;
    limits.stall = milliseconds(2000);
    connect(limits, tinyBuffer, tinyBuffer);
    constexpr std::size_t total = 40 * (36 + blockSize);
    for (std::uint32_t i = 0; i < 40; ++i) {
        ASSERT_EQ(setData(i, blockSize), simConnectOk);
    }
    std::size_t received = 0;
    while (received < total) {
        const std::size_t piece = std::min<std::size_t>(4096, total - received);
        std::atomic<bool> done{false};
        std::thread flusher([&] {
            while (!done) {
                EXPECT_EQ(dispatch(), simConnectOk);
            }
        });
        const std::size_t read = peer->read(piece).size();
        done = true;
        flusher.join();
        ASSERT_EQ(read, piece);
        received += read;
    }
}

} // namespace
