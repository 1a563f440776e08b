#pragma once

#include "simconnect/session.h"
#include "simconnect/wire.h"
#include "tests/support/loopback_peer.h"
#include "tests/support/message_log.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

/// A session connected to a peer whose bytes the test sends and reads itself.
class SessionTest : public testing::Test {
protected:
    void connect(SessionLimits limits = {}, int sendBuffer = 0, int peerReceiveBuffer = 0) {
        peer = std::make_unique<LoopbackPeer>(peerReceiveBuffer);
        Socket socket = connectSocket("127.0.0.1", peer->port(), AddressFamily::Ipv4, std::chrono::seconds(5));
        ASSERT_TRUE(socket.valid());
        if (sendBuffer > 0) {
            socket.setSendBuffer(sendBuffer);
        }
        session = std::make_unique<SimConnectSession>(std::move(socket), limits);
        ASSERT_TRUE(peer->accept());
    }

    SimConnectResult transmit(std::uint32_t event) {
        return session->request([&](auto& out, std::uint32_t sendId) {
            SimConnectWire::appendTransmitClientEvent(out, sendId, 0, event, 0, 1, 0x10);
        });
    }

    /// A block of client data, filled with a byte that tells its number.
    SimConnectResult setData(std::uint32_t number, std::size_t size) {
        const std::vector<std::uint8_t> data(size, static_cast<std::uint8_t>(number));
        return session->request(
            [&](auto& out, std::uint32_t sendId) { SimConnectWire::appendSetClientData(out, sendId, 1, 1, 0, data); });
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
    std::unique_ptr<SimConnectSession> session;
    MessageLog log;
};
