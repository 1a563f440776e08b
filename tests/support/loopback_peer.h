#pragma once

#include "simulation/simulator/simulator_listener.h"
#include "simulation/simulator/stream_reset.h"
#include "tests/support/transport.h"
#include "tests/support/wait_until.h"
#include "wire/simconnect_cfg.h"
#include "wire/simconnect_open.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

using PeerBytes = std::vector<std::uint8_t>;

/// For peers that never answer an open. They take one connection at a time, and may be slow to make room for the next.
constexpr SimConnectOpenLimits noWait{.answer = std::chrono::milliseconds(0), .busyPipe = std::chrono::seconds(30)};

/// A listener on loopback or a pipe that knows no protocol: the test sends and reads every byte itself.
class LoopbackPeer {
public:
    explicit LoopbackPeer(Transport transport = Transport::Tcp, int receiveBuffer = 0)
        : listener(transport == Transport::Tcp ? SimulatorListener(0, receiveBuffer)
                                               : SimulatorListener(freePipeName(), receiveBuffer)) {
        listener.listen(error);
    }

    SimConnectEndpoint endpoint() const { return listener.endpoint(); }

    /// Takes the next connection; false when none comes.
    bool accept() {
        return waitUntil([&] {
            connection = listener.accept();
            return connection.valid();
        });
    }

    /// The next `size` bytes; fewer when the connection ends before them, or they don't come.
    PeerBytes read(std::size_t size) {
        PeerBytes bytes;
        waitUntil([&] { return readSome(bytes, size) || bytes.size() == size; });
        return bytes;
    }

    /// Whether the other side has ended its sending, after everything else was read.
    bool readEnd() {
        PeerBytes ignored;
        return waitUntil([&] { return readSome(ignored, ignored.size() + 4096); });
    }

    /// Sends all of it.
    bool send(std::span<const std::uint8_t> bytes) {
        return waitUntil([&] {
            const Transfer transfer = connection.send(bytes);
            bytes = bytes.subspan(transfer.status == TransferStatus::Done ? transfer.count : 0);
            return bytes.empty();
        });
    }

    void close() { connection.close(); }
    void reset() { resetStream(connection); }
    void stopListening() { listener.close(); }

private:
    // Reads what is there until `bytes` has `size`; true at the connection's end.
    bool readSome(PeerBytes& bytes, std::size_t size) {
        while (bytes.size() < size) {
            std::array<std::uint8_t, 4096> piece{};
            const auto room = std::span(piece).first(std::min(piece.size(), size - bytes.size()));
            const Transfer transfer = connection.receive(room);
            if (transfer.status != TransferStatus::Done) {
                return transfer.status != TransferStatus::WouldBlock;
            }
            bytes.insert(bytes.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(transfer.count));
        }
        return false;
    }

    std::string error;
    SimulatorListener listener;
    ByteStream connection;
};

/// Little-endian 32-bit words.
inline PeerBytes wireWords(std::initializer_list<std::uint32_t> words) {
    PeerBytes bytes;
    for (const std::uint32_t word : words) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<std::uint8_t>(word >> shift));
        }
    }
    return bytes;
}

/// A name in its field of 256 bytes.
inline PeerBytes nameField(const std::string& name) {
    PeerBytes field(name.begin(), name.end());
    field.resize(256);
    return field;
}

/// A message of the simulator, with its head.
inline PeerBytes simulatorMessage(std::uint32_t id, const PeerBytes& body = {}) {
    PeerBytes message = wireWords({static_cast<std::uint32_t>(12 + body.size()), 4, id});
    message.insert(message.end(), body.begin(), body.end());
    return message;
}

/// The bytes of all of them, one behind the other.
inline PeerBytes joined(std::initializer_list<PeerBytes> parts) {
    PeerBytes bytes;
    for (const PeerBytes& part : parts) {
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}
