#include "simconnect/simconnect_api.h"

#include "tests/support/loopback_peer.h"
#include "tests/support/message_log.h"
#include "wire/requests.h"
#include "wire/simconnect_open.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

// Of peers that never answer.
constexpr SimConnectOpenLimits noWait{std::chrono::milliseconds(0)};

class SimConnectApi : public testing::TestWithParam<Transport> {
protected:
    void SetUp() override {
        ASSERT_EQ(simConnectOpenAt(&handle, "test", peer.endpoint(), noWait), simConnectOk);
        ASSERT_TRUE(peer.accept());
        ASSERT_EQ(peer.read(296).size(), 296U);
    }
    void TearDown() override { SimConnect_Close(handle); }

    // The next request's type and send id, and the request.
    PeerBytes nextRequest() {
        PeerBytes request = peer.read(4);
        if (request.size() == 4) {
            const PeerBytes rest = peer.read(MessageLog::wordOf(request, 0) - 4);
            request.insert(request.end(), rest.begin(), rest.end());
        }
        return request;
    }

    LoopbackPeer peer{GetParam()};
    SimConnectHandle handle = nullptr;
    MessageLog log;
};

INSTANTIATE_TEST_SUITE_P(Transports, SimConnectApi, testing::ValuesIn(transports()), transportName);

using SimConnectWire::Bytes;

TEST_P(SimConnectApi, EachFunctionSendsItsRequest) {
    Bytes expected;
    std::array<std::uint8_t, 3> block{7, 8, 9};
    EXPECT_EQ(SimConnect_AddToDataDefinition(handle, 1, "ELECTRICAL MASTER BATTERY:2", "Bool", 1, 0, 0xFFFFFFFF),
              simConnectOk);
    SimConnectWire::appendAddToDataDefinition(expected, {2}, 1, "ELECTRICAL MASTER BATTERY:2", "Bool", 1, 0,
                                              0xFFFFFFFF);
    EXPECT_EQ(SimConnect_RequestDataOnSimObject(handle, 1, 2, 3, 4, 5, 6, 7, 8), simConnectOk);
    SimConnectWire::appendRequestDataOnSimObject(expected, {3}, 1, 2, 3, 4, 5, 6, 7, 8);
    EXPECT_EQ(SimConnect_MapClientEventToSimEvent(handle, 1, "BEACON"), simConnectOk);
    SimConnectWire::appendMapClientEventToSimEvent(expected, {4}, 1, "BEACON");
    EXPECT_EQ(SimConnect_TransmitClientEvent(handle, 0, 1, 2, 3, 0x10), simConnectOk);
    SimConnectWire::appendTransmitClientEvent(expected, {5}, 0, 1, 2, 3, 0x10);
    EXPECT_EQ(SimConnect_MapClientDataNameToID(handle, "MobiFlight.LVars", 0x1002), simConnectOk);
    SimConnectWire::appendMapClientDataNameToId(expected, {6}, "MobiFlight.LVars", 0x1002);
    EXPECT_EQ(SimConnect_AddToClientDataDefinition(handle, 1, 2, 3, 0.25F, 5), simConnectOk);
    SimConnectWire::appendAddToClientDataDefinition(expected, {7}, 1, 2, 3, 0.25F, 5);
    EXPECT_EQ(SimConnect_RequestClientData(handle, 1, 2, 3, 4, 5, 6, 7, 8), simConnectOk);
    SimConnectWire::appendRequestClientData(expected, {8}, 1, 2, 3, 4, 5, 6, 7, 8);
    EXPECT_EQ(SimConnect_SetClientData(handle, 1, 2, 0, 0, 3, block.data()), simConnectOk);
    SimConnectWire::appendSetClientData(expected, {9}, 1, 2, 0, block);
    EXPECT_EQ(peer.read(expected.size()), expected);
}

TEST_P(SimConnectApi, MissingUnitAndEventNameAreEmptyFields) {
    EXPECT_EQ(SimConnect_AddToDataDefinition(handle, 1, "TITLE", nullptr, 1, 0, 0), simConnectOk);
    EXPECT_EQ(SimConnect_MapClientEventToSimEvent(handle, 1, nullptr), simConnectOk);
    EXPECT_EQ(nextRequest().at(276), 0);
    EXPECT_EQ(nextRequest().at(20), 0);
}

TEST_P(SimConnectApi, RefusesArgumentsThatNoRequestCanHold) {
    const std::string tooLong(256, 'x');
    std::array<std::uint8_t, 1> byte{};
    std::vector<std::uint8_t> block(8193);
    EXPECT_EQ(SimConnect_AddToDataDefinition(handle, 1, nullptr, "", 1, 0, 0), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_AddToDataDefinition(handle, 1, tooLong.c_str(), "", 1, 0, 0), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_AddToDataDefinition(handle, 1, "X", tooLong.c_str(), 1, 0, 0), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_MapClientEventToSimEvent(handle, 1, tooLong.c_str()), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_MapClientDataNameToID(handle, nullptr, 1), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_MapClientDataNameToID(handle, tooLong.c_str(), 1), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_SetClientData(handle, 1, 1, 0, 0, 1, nullptr), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_SetClientData(handle, 1, 1, 0, 0, 0, byte.data()), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_SetClientData(handle, 1, 1, 0, 0, 8193, block.data()), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_CallDispatch(handle, nullptr, nullptr), simConnectInvalidArgument);
    // None of them spent a send id or a byte.
    EXPECT_EQ(SimConnect_SetClientData(handle, 1, 1, 0, 0, 8192, block.data()), simConnectOk);
    EXPECT_EQ(MessageLog::wordOf(nextRequest(), 12), 2U);
}

void expectDead(SimConnectHandle handle) {
    std::array<std::uint8_t, 4> data{};
    MessageLog log;
    EXPECT_EQ(SimConnect_Close(handle), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_CallDispatch(handle, &MessageLog::dispatchProc, &log), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_AddToDataDefinition(handle, 1, "X", "", 1, 0, 0), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_RequestDataOnSimObject(handle, 1, 1, 0, 3, 1, 0, 0, 0), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_MapClientEventToSimEvent(handle, 1, "X"), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_TransmitClientEvent(handle, 0, 1, 0, 1, 16), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_MapClientDataNameToID(handle, "X", 1), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_AddToClientDataDefinition(handle, 1, 0, 4, 0, 0), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_RequestClientData(handle, 1, 1, 1, 3, 1, 0, 0, 0), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_SetClientData(handle, 1, 1, 0, 0, 4, data.data()), simConnectInvalidArgument);
}

TEST(SimConnectHandles, NullIsNoSession) {
    expectDead(nullptr);
}

TEST(SimConnectHandles, InventedHandleIsNoSession) {
    int something = 0;
    expectDead(&something);
}

TEST_P(SimConnectApi, ClosedHandleIsNoSession) {
    ASSERT_EQ(SimConnect_Close(handle), simConnectOk);
    expectDead(handle);
}

TEST_P(SimConnectApi, HandlesAreNeverGivenTwice) {
    const SimConnectHandle first = handle;
    ASSERT_EQ(SimConnect_Close(first), simConnectOk);
    ASSERT_EQ(simConnectOpenAt(&handle, "again", peer.endpoint(), noWait), simConnectOk);
    EXPECT_NE(handle, first);
    expectDead(first);
}

TEST_P(SimConnectApi, SessionsAreIndependent) {
    LoopbackPeer otherPeer(GetParam());
    SimConnectHandle other = nullptr;
    ASSERT_EQ(simConnectOpenAt(&other, "other", otherPeer.endpoint(), noWait), simConnectOk);
    ASSERT_TRUE(otherPeer.accept());
    otherPeer.close();
    EXPECT_TRUE(waitUntil(
        [&] { return SimConnect_CallDispatch(other, &MessageLog::dispatchProc, &log) == simConnectRemoteDisconnect; }));
    EXPECT_EQ(SimConnect_CallDispatch(handle, &MessageLog::dispatchProc, &log), simConnectOk);
    EXPECT_EQ(SimConnect_Close(other), simConnectOk);
}

TEST_P(SimConnectApi, CloseInsideTheCallbackIsSafe) {
    log.onMessage = [&](const auto&) { EXPECT_EQ(SimConnect_Close(handle), simConnectOk); };
    PeerBytes two = simulatorMessage(3);
    const PeerBytes second = simulatorMessage(8);
    two.insert(two.end(), second.begin(), second.end());
    ASSERT_TRUE(peer.send(two));
    EXPECT_TRUE(waitUntil([&] {
        SimConnect_CallDispatch(handle, &MessageLog::dispatchProc, &log);
        return !log.messages.empty();
    }));
    EXPECT_EQ(log.messages.size(), 1U);
    expectDead(handle);
    EXPECT_TRUE(peer.readEnd());
}

TEST_P(SimConnectApi, CallbackMayOpenTheNextSession) {
    SimConnectHandle next = nullptr;
    log.onMessage = [&](const auto&) {
        EXPECT_EQ(simConnectOpenAt(&next, "next", peer.endpoint(), noWait), simConnectOk);
    };
    ASSERT_TRUE(peer.send(simulatorMessage(2)));
    EXPECT_TRUE(waitUntil([&] {
        SimConnect_CallDispatch(handle, &MessageLog::dispatchProc, &log);
        return next != nullptr;
    }));
    EXPECT_EQ(SimConnect_Close(next), simConnectOk);
}

TEST_P(SimConnectApi, RequestsOfManyThreadsArriveWholeWithRisingIds) {
    constexpr std::uint32_t threads = 4;
    constexpr std::uint32_t each = 500;
    std::vector<std::thread> senders;
    senders.reserve(threads);
    for (std::uint32_t sender = 0; sender < threads; ++sender) {
        senders.emplace_back([this, sender] {
            std::vector<std::uint8_t> block(256, static_cast<std::uint8_t>(sender));
            for (std::uint32_t i = 0; i < each; ++i) {
                EXPECT_EQ(SimConnect_SetClientData(handle, sender, i, 0, 0, 256, block.data()), simConnectOk);
            }
        });
    }
    std::array<std::uint32_t, threads> next{};
    for (std::uint32_t i = 0; i < threads * each; ++i) {
        const PeerBytes request = nextRequest();
        ASSERT_EQ(request.size(), 36U + 256U);
        ASSERT_EQ(MessageLog::wordOf(request, 12), i + 2);
        const std::uint32_t sender = MessageLog::wordOf(request, 16);
        ASSERT_LT(sender, threads);
        ASSERT_EQ(MessageLog::wordOf(request, 20), next[sender]++);
        ASSERT_EQ(request[36], sender);
        ASSERT_EQ(request[291], sender);
    }
    for (std::thread& sender : senders) {
        sender.join();
    }
}

TEST_P(SimConnectApi, CloseUnderOtherThreadsCallsIsSafe) {
    std::atomic<bool> sawClosed{false};
    std::thread sender([&] {
        std::array<std::uint8_t, 256> block{};
        while (SimConnect_SetClientData(handle, 1, 1, 0, 0, 256, block.data()) == simConnectOk) {
        }
        sawClosed = true;
    });
    std::thread dispatcher([&] {
        while (SimConnect_CallDispatch(handle, &MessageLog::dispatchProc, &log) == simConnectOk) {
        }
    });
    ASSERT_TRUE(peer.send(simulatorMessage(2)));
    EXPECT_EQ(nextRequest().size(), 36U + 256U);
    EXPECT_EQ(SimConnect_Close(handle), simConnectOk);
    sender.join();
    dispatcher.join();
    EXPECT_TRUE(sawClosed);
}

TEST_P(SimConnectApi, DispatchesOfManyThreadsHandOutEachMessageOnce) {
    std::atomic<std::uint32_t> count{0};
    std::atomic<bool> inside{false};
    struct Context {
        std::atomic<std::uint32_t>& count;
        std::atomic<bool>& inside;
    } context{count, inside};
    const auto proc = [](SimConnectRecv*, std::uint32_t, void* given) {
        auto& shared = *static_cast<Context*>(given);
        EXPECT_FALSE(shared.inside.exchange(true));
        ++shared.count;
        shared.inside = false;
    };
    constexpr std::uint32_t total = 2000;
    constexpr std::size_t threads = 3;
    std::vector<std::thread> dispatchers;
    dispatchers.reserve(threads);
    for (std::size_t i = 0; i < threads; ++i) {
        dispatchers.emplace_back([&] {
            waitUntil([&] {
                EXPECT_EQ(SimConnect_CallDispatch(handle, proc, &context), simConnectOk);
                return count >= total;
            });
        });
    }
    for (std::uint32_t i = 0; i < total; ++i) {
        ASSERT_TRUE(peer.send(simulatorMessage(i)));
    }
    for (std::thread& dispatcher : dispatchers) {
        dispatcher.join();
    }
    EXPECT_EQ(count, total);
}

} // namespace
