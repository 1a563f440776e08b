#pragma once

#include "native_socket.h"
#include "tests/support/loopback_peer.h"
#include "tests/support/message_log.h"
#include "wire/requests.h"
#include "wire/wire_session.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

/// The calls of a session, and what it hands out.
struct SessionCalls {
    SimConnectResult transmit(std::uint32_t event) const {
        return session->request(
            [&](auto& out, auto head) { SimConnectWire::appendTransmitClientEvent(out, head, 0, event, 0, 1, 0x10); });
    }

    /// A block of client data whose bytes are its number.
    SimConnectResult setData(std::uint32_t number, std::size_t size) const {
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

    /// Dispatches until one fails. Returns its failure, or success when none fails.
    SimConnectResult dispatchUntilLost() {
        SimConnectResult result = simConnectOk;
        waitUntil([&] {
            result = dispatch();
            return result != simConnectOk;
        });
        return result;
    }

    std::unique_ptr<WireSession> session;
    MessageLog log;
};

/// A session connected over each transport to a peer whose bytes the test sends and reads itself.
class SessionTest : public testing::TestWithParam<Transport>, protected SessionCalls {
protected:
    /// `bufferBytes`: of the session's send buffer and the peer's receive buffer; 0 for the system's own.
    void connect(SessionLimits limits = {}, int bufferBytes = 0) {
        peer = std::make_unique<LoopbackPeer>(GetParam(), bufferBytes);
        ByteStream stream = connectToPeer(bufferBytes);
        ASSERT_TRUE(stream.valid());
        session = std::make_unique<WireSession>(std::move(stream), limits);
        ASSERT_TRUE(peer->accept());
    }

    // A pipe has no send buffer of its own: what was sent is in the peer's receive buffer.
    ByteStream connectToPeer(int sendBuffer = 0) const {
        const SimConnectEndpoint endpoint = peer->endpoint();
        constexpr std::chrono::seconds limit{30};
        if (GetParam() == Transport::Pipe) {
            return connectPipe(endpoint.address, endpoint.pipe, limit);
        }
        Socket socket = connectSocket(endpoint.address, endpoint.port, endpoint.family, limit);
        if (sendBuffer > 0) {
            NativeSocket::setOption(static_cast<NativeSocket::Handle>(socket.handle()), SOL_SOCKET, SO_SNDBUF,
                                    sendBuffer);
        }
        return socket;
    }

    std::unique_ptr<LoopbackPeer> peer;
};
