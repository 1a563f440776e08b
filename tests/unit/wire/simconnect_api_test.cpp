#include "simconnect/simconnect_api.h"

#include "tests/support/loopback_peer.h"
#include "tests/support/message_log.h"
#include "wire/simconnect_open.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

class SimConnectApi : public testing::TestWithParam<Transport> {
protected:
    void SetUp() override {
        ASSERT_EQ(simConnectOpenAt(&handle, "test", peer.endpoint(), noWait), simConnectOk);
        ASSERT_TRUE(peer.accept());
        ASSERT_EQ(peer.read(296).size(), 296U);
    }
    void TearDown() override { SimConnect_Close(handle); }

    // Empty when none comes.
    PeerBytes nextRequest() {
        const PeerBytes size = peer.read(4);
        return size.size() < 4 ? PeerBytes() : joined({size, peer.read(MessageLog::wordOf(size, 0) - 4)});
    }
    SimConnectResult dispatch() { return SimConnect_CallDispatch(handle, &MessageLog::dispatchProc, &log); }
    bool dispatchUntil(std::size_t count) {
        return waitUntil([&] {
            dispatch();
            return log.messages.size() >= count;
        });
    }

    LoopbackPeer peer{GetParam()};
    SimConnectHandle handle = nullptr;
    MessageLog log;
};

INSTANTIATE_TEST_SUITE_P(Transports, SimConnectApi, testing::ValuesIn(transports()), transportName);

/// A function of the interface, and the bytes that it must send.
struct RequestCall {
    std::function<SimConnectResult(SimConnectHandle handle)> call;
    PeerBytes expected;
};

std::array<std::uint8_t, 5> command{'M', 'F', 0xFF, 0x00, 0x80};
std::array<std::uint8_t, 1024> longCommand{};
const std::string longestName(255, 'x');

// In a session's first requests after OPEN.
const std::vector<RequestCall> requestCalls{
    {[](auto handle) { return SimConnect_AddToDataDefinition(handle, 1, "BATTERY:2", "Bool", 4, 0.5F, 0xFFFFFFFF); },
     joined({wireWords({544, 4, 0xF000000C, 2, 1}), nameField("BATTERY:2"), nameField("Bool"),
             wireWords({4, 0x3F000000, 0xFFFFFFFF})})},
    // A text has no unit.
    {[](auto handle) { return SimConnect_AddToDataDefinition(handle, 2, "TITLE", nullptr, 1, 0, 5); },
     joined({wireWords({544, 4, 0xF000000C, 3, 2}), nameField("TITLE"), nameField(""), wireWords({1, 0, 5})})},
    {[](auto handle) { return SimConnect_RequestDataOnSimObject(handle, 11, 12, 13, 14, 15, 16, 17, 18); },
     wireWords({48, 4, 0xF000000E, 4, 11, 12, 13, 14, 15, 16, 17, 18})},
    {[](auto handle) { return SimConnect_MapClientEventToSimEvent(handle, 0x01020304, longestName.c_str()); },
     joined({wireWords({276, 4, 0xF0000004, 5, 0x01020304}), nameField(longestName)})},
    // An event of the client's own has no name.
    {[](auto handle) { return SimConnect_MapClientEventToSimEvent(handle, 1, nullptr); },
     joined({wireWords({276, 4, 0xF0000004, 6, 1}), nameField("")})},
    {[](auto handle) { return SimConnect_TransmitClientEvent(handle, 6, 7, 8, 9, 0x10); },
     wireWords({36, 4, 0xF0000005, 7, 6, 7, 8, 9, 0x10})},
    // The name comes first.
    {[](auto handle) { return SimConnect_MapClientDataNameToID(handle, "MobiFlight.LVars", 0x1002); },
     joined({wireWords({276, 4, 0xF0000037, 8}), nameField("MobiFlight.LVars"), wireWords({0x1002})})},
    {[](auto handle) { return SimConnect_AddToClientDataDefinition(handle, 0x1100, 4, 256, 0.5F, 0xFFFFFFFF); },
     wireWords({36, 4, 0xF0000039, 9, 0x1100, 4, 256, 0x3F000000, 0xFFFFFFFF})},
    // The area comes before the request.
    {[](auto handle) { return SimConnect_RequestClientData(handle, 0x1001, 0x1200, 0x1101, 3, 1, 21, 22, 23); },
     wireWords({48, 4, 0xF000003B, 10, 0x1001, 0x1200, 0x1101, 3, 1, 21, 22, 23})},
    // An array of one block.
    {[](auto handle) { return SimConnect_SetClientData(handle, 0x1000, 0x1100, 2, 0, 5, command.data()); },
     joined({wireWords({41, 4, 0xF000003C, 11, 0x1000, 0x1100, 2, 1, 5}), {'M', 'F', 0xFF, 0x00, 0x80}})},
    {[](auto handle) { return SimConnect_SetClientData(handle, 1, 2, 0, 0, 1024, longCommand.data()); },
     joined({wireWords({1060, 4, 0xF000003C, 12, 1, 2, 0, 1, 1024}), PeerBytes(1024)})},
};

TEST_P(SimConnectApi, EachFunctionSendsItsRequest) {
    for (const RequestCall& request : requestCalls) {
        EXPECT_EQ(request.call(handle), simConnectOk);
        EXPECT_EQ(peer.read(request.expected.size()), request.expected);
    }
}

TEST_P(SimConnectApi, RefusesArgumentsThatNoRequestCanHold) {
    const std::string longName(256, 'x');
    const char* const tooLong = longName.c_str();
    std::vector<std::uint8_t> data(8193);
    const std::vector<SimConnectResult> results{
        SimConnect_AddToDataDefinition(handle, 1, nullptr, "", 1, 0, 0),
        SimConnect_AddToDataDefinition(handle, 1, tooLong, "", 1, 0, 0),
        SimConnect_AddToDataDefinition(handle, 1, "X", tooLong, 1, 0, 0),
        SimConnect_MapClientEventToSimEvent(handle, 1, tooLong),
        SimConnect_MapClientDataNameToID(handle, nullptr, 1),
        SimConnect_MapClientDataNameToID(handle, tooLong, 1),
        SimConnect_SetClientData(handle, 1, 1, 0, 0, 1, nullptr),
        SimConnect_SetClientData(handle, 1, 1, 0, 0, 0, data.data()),
        SimConnect_SetClientData(handle, 1, 1, 0, 0, 8193, data.data()),
        SimConnect_CallDispatch(handle, nullptr, nullptr),
    };
    EXPECT_EQ(results, std::vector<SimConnectResult>(results.size(), simConnectInvalidArgument));
    // None of them spent a send id or a byte.
    EXPECT_EQ(SimConnect_SetClientData(handle, 1, 1, 0, 0, 8192, data.data()), simConnectOk);
    EXPECT_EQ(MessageLog::wordOf(nextRequest(), 12), 2U);
}

void expectDead(SimConnectHandle handle) {
    MessageLog log;
    EXPECT_EQ(SimConnect_Close(handle), simConnectInvalidArgument);
    EXPECT_EQ(SimConnect_CallDispatch(handle, &MessageLog::dispatchProc, &log), simConnectInvalidArgument);
    for (const RequestCall& request : requestCalls) {
        EXPECT_EQ(request.call(handle), simConnectInvalidArgument);
    }
}

TEST(SimConnectHandles, NullAndInventedHandlesAreNoSession) {
    int something = 0;
    expectDead(nullptr);
    expectDead(&something);
}

TEST_P(SimConnectApi, ClosedHandleIsNoSessionAndIsNeverGivenAgain) {
    const SimConnectHandle first = handle;
    ASSERT_EQ(SimConnect_Close(first), simConnectOk);
    expectDead(first);
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
    EXPECT_EQ(dispatch(), simConnectOk);
    EXPECT_EQ(SimConnect_Close(other), simConnectOk);
}

TEST_P(SimConnectApi, CloseInsideTheCallbackDropsTheMessagesBehind) {
    log.onMessage = [&](const auto&) { EXPECT_EQ(SimConnect_Close(handle), simConnectOk); };
    ASSERT_TRUE(peer.send(joined({simulatorMessage(3), simulatorMessage(8)})));
    EXPECT_TRUE(dispatchUntil(1));
    EXPECT_EQ(log.ids(), std::vector<std::uint32_t>{3});
    expectDead(handle);
    EXPECT_TRUE(peer.readEnd());
}

TEST_P(SimConnectApi, CallbackMayMakeRequestsAndOpenTheNextSessionButNotDispatch) {
    SimConnectHandle next = nullptr;
    MessageLog inner;
    log.onMessage = [&](const auto&) {
        EXPECT_EQ(SimConnect_TransmitClientEvent(handle, 0, 1, 0, 1, 0x10), simConnectOk);
        EXPECT_EQ(SimConnect_CallDispatch(handle, &MessageLog::dispatchProc, &inner), simConnectOk);
        if (next == nullptr) {
            EXPECT_EQ(simConnectOpenAt(&next, "next", peer.endpoint(), noWait), simConnectOk);
        }
    };
    ASSERT_TRUE(peer.send(joined({simulatorMessage(2), simulatorMessage(3)})));
    EXPECT_TRUE(dispatchUntil(2));
    EXPECT_EQ(log.ids(), (std::vector<std::uint32_t>{2, 3}));
    EXPECT_TRUE(inner.messages.empty());
    EXPECT_EQ(nextRequest().size(), 36U);
    EXPECT_EQ(SimConnect_Close(next), simConnectOk);
}

TEST_P(SimConnectApi, RequestsOfManyThreadsArriveWholeWithRisingIds) {
    constexpr std::uint32_t each = 500;
    const auto sendAll = [&](std::uint32_t sender) {
        std::vector<std::uint8_t> data(256, static_cast<std::uint8_t>(sender));
        for (std::uint32_t i = 0; i < each; ++i) {
            EXPECT_EQ(SimConnect_SetClientData(handle, sender, i, 0, 0, 256, data.data()), simConnectOk);
        }
    };
    constexpr std::uint32_t threads = 4;
    std::vector<std::jthread> senders;
    for (std::uint32_t sender = 0; sender < threads; ++sender) {
        senders.emplace_back(sendAll, sender);
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
}

TEST_P(SimConnectApi, CloseUnderOtherThreadsCallsIsSafe) {
    const std::jthread sender([&] {
        std::array<std::uint8_t, 256> data{};
        while (SimConnect_SetClientData(handle, 1, 1, 0, 0, 256, data.data()) == simConnectOk) {
        }
    });
    const std::jthread dispatcher([&] {
        while (dispatch() == simConnectOk) {
        }
    });
    ASSERT_TRUE(peer.send(simulatorMessage(2)));
    EXPECT_EQ(nextRequest().size(), 36U + 256U);
    EXPECT_EQ(SimConnect_Close(handle), simConnectOk);
}

TEST_P(SimConnectApi, DispatchesOfManyThreadsHandOutEachMessageOnce) {
    struct Context {
        std::atomic<std::uint32_t> count{0};
        std::atomic<bool> inside{false};
    } context;
    const auto proc = [](SimConnectRecv*, std::uint32_t, void* given) {
        auto& shared = *static_cast<Context*>(given);
        EXPECT_FALSE(shared.inside.exchange(true));
        ++shared.count;
        shared.inside = false;
    };
    constexpr std::uint32_t total = 2000;
    const auto dispatchAll = [&] {
        waitUntil([&] {
            EXPECT_EQ(SimConnect_CallDispatch(handle, proc, &context), simConnectOk);
            return context.count >= total;
        });
    };
    std::vector<std::jthread> dispatchers(3);
    for (std::jthread& dispatcher : dispatchers) {
        dispatcher = std::jthread(dispatchAll);
    }
    for (std::uint32_t i = 0; i < total; ++i) {
        ASSERT_TRUE(peer.send(simulatorMessage(i)));
    }
    dispatchers.clear();
    EXPECT_EQ(context.count, total);
}

} // namespace
