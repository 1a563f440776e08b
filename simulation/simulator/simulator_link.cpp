#include "simulation/simulator/simulator_link.h"

#include "simulation/simulator/stream_reset.h"

#include <array>

namespace {

constexpr std::size_t readPiece = 64UL * 1024UL;
// Keeps a client that sends without pause from delaying the others.
constexpr std::size_t readsPerTurn = 16;
// A client that reads nothing would otherwise make the simulator's memory grow forever.
constexpr std::size_t largestBacklog = 64UL * 1024UL * 1024UL;
// How long a client may take to read the last messages before the connection is cut.
constexpr std::chrono::seconds finishTime{2};

} // namespace

void SimulatorLink::send(std::span<const std::uint8_t> bytes) {
    if (!live()) {
        return;
    }
    outbound.tail().insert(outbound.tail().end(), bytes.begin(), bytes.end());
    flush();
    if (outbound.pending().size() > largestBacklog) {
        reset();
    }
}

void SimulatorLink::flush() {
    while (!over() && !outbound.pending().empty()) {
        const auto pending = outbound.pending();
        const Transfer transfer = stream.send(byteByByte ? pending.first(1) : pending);
        if (transfer.status == TransferStatus::WouldBlock) {
            return;
        }
        if (transfer.status != TransferStatus::Done) {
            close();
            return;
        }
        outbound.consume(transfer.count);
    }
}

void SimulatorLink::read() {
    readSomething = false;
    for (std::size_t reads = 0; reads < readsPerTurn && live(); ++reads) {
        const Transfer transfer = stream.receive(inbound.prepare(readPiece));
        if (transfer.status == TransferStatus::Done) {
            inbound.commit(transfer.count);
            readSomething = true;
        } else if (transfer.status == TransferStatus::WouldBlock) {
            return;
        } else {
            close();
        }
    }
}

void SimulatorLink::finish() {
    if (!live()) {
        return;
    }
    state = State::Finishing;
    finishLimit = Clock::now() + finishTime;
    continueFinish(Clock::now());
}

// Closing a socket with unread requests resets the connection, which may lose the last messages. So the simulator ends
// its own side and reads on until the client has ended, too.
void SimulatorLink::continueFinish(Clock::time_point now) {
    flush();
    if (over() || now >= finishLimit) {
        close();
        return;
    }
    if (!outbound.pending().empty()) {
        return;
    }
    if (!sendingEnded && !stream.endSending()) {
        close();
        return;
    }
    sendingEnded = true;
    std::array<std::uint8_t, 4096> ignored{};
    Transfer transfer{TransferStatus::Done, 0};
    while (transfer.status == TransferStatus::Done) {
        transfer = stream.receive(ignored);
    }
    if (transfer.status != TransferStatus::WouldBlock) {
        close();
    }
}

void SimulatorLink::reset() {
    resetStream(stream);
    state = State::Over;
}

void SimulatorLink::close() {
    stream.close();
    state = State::Over;
}

std::optional<SocketInterest> SimulatorLink::interest(bool reading) const {
    const Socket* const socket = stream.socket();
    return socket == nullptr ? std::nullopt : std::optional<SocketInterest>({socket->handle(), reading, backlogged()});
}
