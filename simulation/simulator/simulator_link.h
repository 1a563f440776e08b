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

/// The simulator's end of one connection. Never blocks: what the client doesn't take waits here. Not synchronised.
class SimulatorLink {
public:
    using Clock = std::chrono::steady_clock;

    explicit SimulatorLink(ByteStream stream) : stream(std::move(stream)) {}

    /// Neither side has ended it.
    bool live() const { return state == State::Live; }
    /// Nothing is left to do for it.
    bool over() const { return state == State::Over; }

    void send(std::span<const std::uint8_t> bytes);
    /// Sends what waits, as far as it goes.
    void flush();
    bool backlogged() const { return !outbound.pending().empty(); }
    /// Reads what has come, a bounded piece of it. Messages are then in `reader`.
    void read();
    MessageReader& reader() { return inbound; }

    /// Ends in order: what waits is still sent.
    void finish();
    /// Ends with a reset.
    void reset();
    /// Moves an end in order on. Only while neither live nor over.
    void continueFinish(Clock::time_point now);

    /// The last read brought something, so that more may be there.
    bool flowing() const { return readSomething; }
    /// What to wait for; none: it has to be looked at from time to time.
    std::optional<SocketInterest> interest(bool reading) const;
    /// Whether each byte is a send of its own.
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
