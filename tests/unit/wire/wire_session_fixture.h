#pragma once

#include "tests/support/loopback_peer.h"
#include "tests/support/message_log.h"
#include "wire/requests.h"
#include "wire/wire_session.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

/// A session connected over each transport to a peer whose bytes the test sends and reads itself.
class SessionTest : public testing::TestWithParam<Transport> {
protected:
    void connect(SessionLimits limits = {}, int sendBuffer = 0, int peerReceiveBuffer = 0) {
        peer = std::make_unique<LoopbackPeer>(GetParam(), peerReceiveBuffer);
        ByteStream stream = connectToPeer(sendBuffer);
        ASSERT_TRUE(stream.valid());
        session = std::make_unique<WireSession>(std::move(stream), limits);
        ASSERT_TRUE(peer->accept());
    }

    /// A pipe has no send buffer of its own: what was sent lies in the peer's receive buffer.
    ByteStream connectToPeer(int sendBuffer) const {
        const SimConnectEndpoint endpoint = peer->endpoint();
        constexpr std::chrono::seconds limit{5};
        if (GetParam() == Transport::Pipe) {
            return connectPipe(endpoint.address, endpoint.pipe, limit);
        }
        Socket socket = connectSocket(endpoint.address, endpoint.port, endpoint.family, limit);
        if (sendBuffer > 0) {
            socket.setSendBuffer(sendBuffer);
        }
        return socket;
    }

    SimConnectResult transmit(std::uint32_t event) {
        return session->request(
            [&](auto& out, auto head) { SimConnectWire::appendTransmitClientEvent(out, head, 0, event, 0, 1, 0x10); });
    }

    /// A block of client data, filled with a byte that tells its number.
    SimConnectResult setData(std::uint32_t number, std::size_t size) {
        const std::vector<std::uint8_t> data(size, static_cast<std::uint8_t>(number));
        return session->request(
            [&](auto& out, auto head) { SimConnectWire::appendSetClientData(out, head, 1, 1, 0, data); });
    }

    SimConnectResult dispatch() { return session->dispatch(&MessageLog::dispatchProc, &log); }

    /// Dispatches until so many messages have come; false when they don't.
    bool dispatchUntil(std::size_t count) {
        return waitUntil([&] {
            EXPECT_EQ(dispatch(), simConnectOk);
            return log.messages.size() >= count;
        });
    }

    /// Dispatches until the link's loss is told; gives the failure, or success when it isn't told.
    SimConnectResult dispatchUntilLost() {
        SimConnectResult result = simConnectOk;
        waitUntil([&] {
            result = dispatch();
            return result != simConnectOk;
        });
        return result;
    }

    std::unique_ptr<LoopbackPeer> peer;
    std::unique_ptr<WireSession> session;
    MessageLog log;
};
