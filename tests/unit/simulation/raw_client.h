#pragma once

#include "simulation/simulator/virtual_simulator.h"
#include "tests/support/loopback_peer.h"
#include "tests/support/message_log.h"
#include "wire/message_reader.h"
#include "wire/requests.h"

#include <gtest/gtest.h>

#include <optional>
#include <string_view>

/// A client of the virtual simulator that makes its requests word by word, also those that the bridge's own client
/// library doesn't have. Requests count their send ids from 1, of which OPEN is the first.
class RawClient {
public:
    /// Opens a session and takes the answer off the wire.
    explicit RawClient(const VirtualSimulator& simulator)
        : socket(connectSocket("127.0.0.1", simulator.port(), AddressFamily::Ipv4, std::chrono::seconds(30))) {
        request(SimConnectWire::openRequest, PeerBytes(280));
        EXPECT_EQ(MessageLog::wordOf(next(), 8), simConnectRecvOpen);
    }

    void request(std::uint32_t type, const PeerBytes& body) {
        PeerBytes bytes = wireWords(
            {static_cast<std::uint32_t>(16 + body.size()), version, SimConnectWire::requestTypeMark | type, ++sendId});
        bytes.insert(bytes.end(), body.begin(), body.end());
        EXPECT_EQ(socket.send(bytes).count, bytes.size());
    }
    void request(std::uint32_t type, std::initializer_list<std::uint32_t> words) { request(type, wireWords(words)); }
    void requestByName(std::uint32_t type, std::uint32_t id, std::string_view name) {
        PeerBytes body = wireWords({id});
        body.insert(body.end(), name.begin(), name.end());
        body.resize(sizeof(id) + SimConnectWire::nameFieldSize);
        request(type, body);
    }

    /// The simulator's next message; one of zeros when none comes.
    PeerBytes next() {
        std::optional<std::span<std::uint8_t>> message;
        waitUntil([&] {
            message = reader.next();
            if (!message) {
                reader.commit(socket.receive(reader.prepare(4096)).count);
            }
            return message.has_value();
        });
        EXPECT_TRUE(message) << "no message came";
        return message ? PeerBytes(message->begin(), message->end()) : PeerBytes(24);
    }
    /// The next message is this.
    void expect(std::uint32_t id, const PeerBytes& body) {
        PeerBytes message = wireWords({static_cast<std::uint32_t>(12 + body.size()), version, id});
        message.insert(message.end(), body.begin(), body.end());
        EXPECT_EQ(next(), message);
    }
    void expect(std::uint32_t id, std::initializer_list<std::uint32_t> words) { expect(id, wireWords(words)); }
    /// The next message is an exception about the last request.
    void expectException(std::uint32_t code, std::uint32_t index) {
        expect(simConnectRecvException, {code, sendId, index});
    }
    /// Makes a request that is refused.
    void expectRefusal(std::uint32_t type, std::initializer_list<std::uint32_t> words, std::uint32_t code,
                       std::uint32_t index) {
        request(type, words);
        expectException(code, index);
    }
    void expectRefusalByName(std::uint32_t type, std::uint32_t id, std::string_view name, std::uint32_t code,
                             std::uint32_t index) {
        requestByName(type, id, name);
        expectException(code, index);
    }
    /// The last requests have no answer: the next message is about one that this sends.
    void expectNothing() {
        request(0xFF, {});
        expectException(1, 0);
    }

private:
    static constexpr std::uint32_t version = 4;

    std::uint32_t sendId = 0;
    Socket socket;
    MessageReader reader{12};
};
