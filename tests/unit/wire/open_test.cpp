// SimConnect_Open: whom it connects to, and what it makes of the simulator's first answer.

#include "tests/support/loopback_peer.h"
#include "tests/support/message_log.h"
#include "wire/requests.h"
#include "wire/simconnect_open.h"
#include "wire/socket.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using SimConnectWire::Bytes;

/// A wait that the peer must end: a test whose peer doesn't hangs until it is killed.
constexpr std::chrono::milliseconds endless = std::chrono::hours(1);
constexpr SimConnectOpenLimits longWait{.answer = endless, .busyPipe = endless};

constexpr std::size_t openSize = 296;
constexpr std::uint32_t anyError = 1;
constexpr std::uint32_t versionMismatch = 5;

PeerBytes openAnswer() {
    return simulatorMessage(simConnectRecvOpen, PeerBytes(296));
}

PeerBytes exceptionMessage(std::uint32_t code) {
    return simulatorMessage(simConnectRecvException, wireWords({code, 1, 4}));
}

class SimConnectOpen : public testing::TestWithParam<Transport> {};

INSTANTIATE_TEST_SUITE_P(Transports, SimConnectOpen, testing::ValuesIn(transports()), transportName);

TEST(SimConnectOpenAt, RefusalEndsTheWaitForAConnection) {
    LoopbackPeer peer(Transport::Tcp);
    peer.stopListening();
    const SimConnectEndpoint refusing = peer.endpoint();
    EXPECT_FALSE(connectSocket(refusing.address, refusing.port, refusing.family, endless).valid());
}

TEST(SimConnectOpenAt, FailsWhereNobodyListensOrCan) {
    LoopbackPeer peer;
    LoopbackPeer absent;
    absent.stopListening();
    const std::vector<SimConnectEndpoint> endpoints{
        absent.endpoint(),
        {"999.999.999.999", 5, AddressFamily::Ipv4},
        {"", 0, AddressFamily::Ipv4},
        // An address of another family.
        {"127.0.0.1", peer.endpoint().port, AddressFamily::Ipv6},
        {".", 0, AddressFamily::Any, "bridge-test-nobody"},
        {".", 0, AddressFamily::Any, std::string(70000, 'x')},
    };
    for (const SimConnectEndpoint& endpoint : endpoints) {
        auto handle = reinterpret_cast<SimConnectHandle>(&peer);
        EXPECT_EQ(simConnectOpenAt(&handle, "test", endpoint), simConnectFail) << endpoint.address << endpoint.port;
        EXPECT_EQ(handle, nullptr);
    }
}

TEST(SimConnectOpenAt, FindsALocalSimulatorByName) {
    LoopbackPeer peer;
    EXPECT_TRUE(connectSocket("localhost", peer.endpoint().port, AddressFamily::Ipv4, endless).valid());
}

TEST_P(SimConnectOpen, RefusesMissingArgumentsAndNamesTooLong) {
    LoopbackPeer peer(GetParam());
    const SimConnectEndpoint endpoint = peer.endpoint();
    SimConnectHandle handle = nullptr;
    EXPECT_EQ(simConnectOpenAt(nullptr, "test", endpoint), simConnectInvalidArgument);
    EXPECT_EQ(simConnectOpenAt(&handle, nullptr, endpoint), simConnectInvalidArgument);
    EXPECT_EQ(simConnectOpenAt(&handle, std::string(256, 'x').c_str(), endpoint), simConnectInvalidArgument);
    EXPECT_EQ(handle, nullptr);
}

TEST_P(SimConnectOpen, SilenceIsASuccessAfterTheLimit) {
    LoopbackPeer peer(GetParam());
    SimConnectHandle handle = nullptr;
    MessageLog log;
    constexpr std::chrono::milliseconds limit{200};
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(simConnectOpenAt(&handle, "slow", peer.endpoint(), {limit}), simConnectOk);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, limit);
    // Nobody has even accepted yet; requests go out nevertheless.
    EXPECT_EQ(SimConnect_CallDispatch(handle, &MessageLog::dispatchProc, &log), simConnectOk);
    EXPECT_EQ(SimConnect_MapClientDataNameToID(handle, "MobiFlight.Command", 0x1000), simConnectOk);
    ASSERT_TRUE(peer.accept());
    Bytes expected;
    SimConnectWire::appendOpen(expected, {1}, "slow");
    SimConnectWire::appendMapClientDataNameToId(expected, {2}, "MobiFlight.Command", 0x1000);
    EXPECT_EQ(peer.read(expected.size()), expected);
    ASSERT_TRUE(peer.send(openAnswer()));
    EXPECT_TRUE(waitUntil([&] {
        EXPECT_EQ(SimConnect_CallDispatch(handle, &MessageLog::dispatchProc, &log), simConnectOk);
        return !log.messages.empty();
    }));
    EXPECT_EQ(log.ids(), std::vector<std::uint32_t>{simConnectRecvOpen});
    EXPECT_EQ(SimConnect_Close(handle), simConnectOk);
}

TEST_P(SimConnectOpen, TakesTheFirstEndpointWhereSomebodyListens) {
    LoopbackPeer absent(GetParam());
    LoopbackPeer first(GetParam());
    LoopbackPeer second(GetParam());
    absent.stopListening();
    SimConnectHandle handle = nullptr;
    const SimConnectEndpoints endpoints{absent.endpoint(), first.endpoint(), second.endpoint()};
    ASSERT_EQ(simConnectOpenAtFirst(&handle, "test", endpoints, noWait), simConnectOk);
    EXPECT_TRUE(first.accept());
    EXPECT_EQ(SimConnect_Close(handle), simConnectOk);
    EXPECT_EQ(simConnectOpenAtFirst(&handle, "test", {absent.endpoint(), absent.endpoint()}), simConnectFail);
    EXPECT_EQ(simConnectOpenAtFirst(&handle, "test", {}), simConnectFail);
    EXPECT_EQ(simConnectOpenAtFirst(&handle, nullptr, endpoints), simConnectInvalidArgument);
}

/// A simulator that answers OPEN, on a thread of its own, since the open waits for it.
class SimConnectAnsweredOpen : public testing::TestWithParam<Transport> {
protected:
    ~SimConnectAnsweredOpen() override {
        finish();
        SimConnect_Close(handle);
    }

    /// Takes as many connections as there are answers, one behind the other, and gives each its answer.
    void answerWith(std::vector<std::function<void()>> answers) {
        simulator = std::thread([this, answers = std::move(answers)] {
            for (const auto& answer : answers) {
                EXPECT_TRUE(peer.accept());
                opens.push_back(peer.read(openSize));
                answer();
            }
        });
    }
    std::function<void()> sending(PeerBytes message) {
        return [this, message = std::move(message)] { EXPECT_TRUE(peer.send(message)); };
    }
    std::function<void()> sendingLast(PeerBytes message) {
        return [this, message = std::move(message)] {
            EXPECT_TRUE(peer.send(message));
            peer.close();
        };
    }
    std::function<void()> refusing(std::uint32_t exception) { return sendingLast(exceptionMessage(exception)); }
    void finish() {
        if (simulator.joinable()) {
            simulator.join();
        }
    }
    SimConnectResult open() {
        const SimConnectResult result = simConnectOpenAt(&handle, "test", peer.endpoint(), longWait);
        finish();
        return result;
    }
    SimConnectResult dispatch() { return SimConnect_CallDispatch(handle, &MessageLog::dispatchProc, &log); }

    static Bytes openIn(std::uint32_t protocol) {
        Bytes request;
        SimConnectWire::appendOpen(request, {1, protocol}, "test");
        return request;
    }

    LoopbackPeer peer{GetParam()};
    SimConnectHandle handle = nullptr;
    MessageLog log;
    /// What each connection began with.
    std::vector<PeerBytes> opens;

private:
    std::thread simulator;
};

INSTANTIATE_TEST_SUITE_P(Transports, SimConnectAnsweredOpen, testing::ValuesIn(transports()), transportName);

TEST_P(SimConnectAnsweredOpen, AgreementEndsTheWaitAndGoesToTheFirstDispatchEvenInPieces) {
    const PeerBytes second = simulatorMessage(simConnectRecvSimobjectData, PeerBytes(32));
    answerWith({[&] {
        for (const std::uint8_t byte : joined({openAnswer(), second})) {
            ASSERT_TRUE(peer.send(std::array{byte}));
        }
    }});
    ASSERT_EQ(open(), simConnectOk);
    EXPECT_EQ(opens, std::vector<PeerBytes>{openIn(4)});
    EXPECT_TRUE(waitUntil([&] {
        EXPECT_EQ(dispatch(), simConnectOk);
        // The second may come a moment later than the answer.
        EXPECT_FALSE(log.messages.empty());
        return log.messages.size() == 2;
    }));
    EXPECT_EQ(log.messages, (std::vector<PeerBytes>{openAnswer(), second}));
}

TEST_P(SimConnectAnsweredOpen, ConnectionThatEndsBehindTheAgreementIsASessionThatIsLost) {
    answerWith({sendingLast(openAnswer())});
    ASSERT_EQ(open(), simConnectOk);
    EXPECT_EQ(dispatch(), simConnectOk);
    EXPECT_EQ(log.ids(), std::vector<std::uint32_t>{simConnectRecvOpen});
    EXPECT_TRUE(waitUntil([&] { return dispatch() == simConnectRemoteDisconnect; }));
}

TEST_P(SimConnectAnsweredOpen, ExceptionIsAFailureWithoutAnotherConnection) {
    answerWith({refusing(anyError)});
    EXPECT_EQ(open(), simConnectFail);
    EXPECT_EQ(handle, nullptr);
    // The next connection is this one.
    ASSERT_EQ(simConnectOpenAt(&handle, "next", peer.endpoint(), noWait), simConnectOk);
    ASSERT_TRUE(peer.accept());
    EXPECT_EQ(peer.read(openSize).at(16), 'n');
}

TEST_P(SimConnectAnsweredOpen, AnythingElseIsAFailure) {
    const std::vector<std::function<void()>> answers{
        [this] { peer.close(); },
        [this] { peer.reset(); },
        // No message has this size.
        sending(wireWords({5, 4, 2})),
        // An exception without a code.
        sending(simulatorMessage(simConnectRecvException)),
    };
    for (const auto& answer : answers) {
        answerWith({answer});
        EXPECT_EQ(open(), simConnectFail);
        EXPECT_EQ(handle, nullptr);
    }
}

TEST_P(SimConnectAnsweredOpen, VersionMismatchIsFollowedByTheNextVersion) {
    answerWith({refusing(versionMismatch), refusing(versionMismatch), sending(openAnswer())});
    ASSERT_EQ(open(), simConnectOk);
    EXPECT_EQ(opens, (std::vector<PeerBytes>{openIn(4), openIn(5), openIn(6)}));
    // The session keeps to the version that was taken.
    ASSERT_EQ(SimConnect_MapClientEventToSimEvent(handle, 1, "AP_MASTER"), simConnectOk);
    Bytes expected;
    SimConnectWire::appendMapClientEventToSimEvent(expected, {2, 6}, 1, "AP_MASTER");
    EXPECT_EQ(peer.read(expected.size()), expected);
}

TEST_P(SimConnectAnsweredOpen, VersionMismatchOfAllVersionsIsAFailure) {
    answerWith(std::vector<std::function<void()>>(3, refusing(versionMismatch)));
    EXPECT_EQ(open(), simConnectFail);
}

TEST_P(SimConnectAnsweredOpen, EndpointThatGivesNoSessionIsPassedOver) {
    LoopbackPeer second(GetParam());
    answerWith({[this] {
        peer.close();
        peer.stopListening();
    }});
    std::thread agreeing([&] {
        EXPECT_TRUE(second.accept());
        EXPECT_EQ(second.read(openSize), openIn(4));
        EXPECT_TRUE(second.send(openAnswer()));
    });
    EXPECT_EQ(simConnectOpenAtFirst(&handle, "test", {peer.endpoint(), second.endpoint()}, longWait), simConnectOk);
    agreeing.join();
    EXPECT_EQ(dispatch(), simConnectOk);
    EXPECT_EQ(log.ids(), std::vector<std::uint32_t>{simConnectRecvOpen});
}

} // namespace
