#pragma once

#include "simulation/simulator/socket_wait.h"
#include "wire/byte_stream.h"
#include "wire/message_reader.h"
#include "wire/outbound_buffer.h"
#include "wire/requests.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

/// The simulator's end of one connection. It never blocks: it keeps the bytes that the client doesn't take yet. Not
/// synchronised.
class SimulatorLink {
public:
    using Clock = std::chrono::steady_clock;

    explicit SimulatorLink(ByteStream stream) : stream(std::move(stream)) {}

    /// Neither side has begun to close it.
    bool live() const { return state == State::Live; }
    /// Nothing is left to do for it.
    bool over() const { return state == State::Over; }

    void send(std::span<const std::uint8_t> bytes);
    /// Sends as much of what waits as the client takes.
    void flush();
    bool backlogged() const { return !outbound.pending().empty(); }
    /// Reads a bounded piece of what has come. Its messages are then in `reader`.
    void read();
    MessageReader& reader() { return inbound; }

    /// Ends the connection properly, after sending what waits.
    void finish();
    /// Closes it with a reset.
    void reset();
    /// Continues a proper end. Only while neither live nor over.
    void continueFinish(Clock::time_point now);

    /// The last read got something, so more may be there.
    bool flowing() const { return readSomething; }
    /// What to wait for. None: nothing ends a wait, so it must be served from time to time.
    std::optional<SocketInterest> interest(bool reading) const;
    /// Whether to send each byte by itself.
    void sendByteByByte(bool on) { byteByByte = on; }

private:
    enum class State { Live, Finishing, Over };

    void close();

    ByteStream stream;
    State state = State::Live;
    OutboundBuffer outbound;
    MessageReader inbound{SimConnectWire::requestHeadSize};
    Clock::time_point finishLimit;
    bool sendingEnded = false;
    bool readSomething = false;
    bool byteByByte = false;
};
