#pragma once

#include "simconnect/simconnect_api.h"
#include "wire/byte_stream.h"
#include "wire/message_reader.h"
#include "wire/outbound_buffer.h"
#include "wire/requests.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>

/// When a session gives up a simulator that stops reading. A stall below both limits loses nothing: requests wait.
struct SessionLimits {
    /// How long it may take no byte while some are waiting. A simulator that loads an aircraft stalls for seconds.
    std::chrono::milliseconds stall{30000};
    /// How many bytes may wait. This many are hours of a busy cockpit.
    std::size_t backlog = 16UL * 1024UL * 1024UL;
};

/// What a simulator answered to the request to open a session.
enum class OpenOutcome {
    /// It agreed, or hasn't answered yet.
    Usable,
    /// It doesn't speak the session's protocol version. It may speak another.
    VersionMismatch,
    /// It refused with another exception, or ended the connection.
    Refused,
};

/// Passes the reader's whole messages to `proc` in order while `proceed()` is true. Returns how many.
template <typename Proceed>
std::size_t handOutMessages(MessageReader& reader, SimConnectDispatchProc proc, void* context, const Proceed& proceed) {
    std::size_t count = 0;
    while (proceed()) {
        const auto message = reader.next();
        if (!message) {
            break;
        }
        proc(reinterpret_cast<SimConnectRecv*>(message->data()), static_cast<std::uint32_t>(message->size()), context);
        ++count;
    }
    return count;
}

/// One connection to a simulator. It has no thread and never blocks: each call moves as many bytes as the connection
/// takes. Any thread may call any member.
class WireSession {
public:
    /// All requests carry this protocol version.
    explicit WireSession(ByteStream stream, SessionLimits limits = {},
                         std::uint32_t protocolVersion = SimConnectWire::protocolVersions.front());

    /// Sends OPEN with this name, which satisfies `isName`, and waits up to the limit for the first message. The first
    /// dispatch delivers all that arrived meanwhile. Must be the first call, before other threads have the session.
    OpenOutcome open(const char* name, std::chrono::milliseconds answerLimit);

    /// Appends the request that `encode(bytes, head)` makes, and sends as much as the connection takes. Returns
    /// simConnectRemoteDisconnect when the link is lost, simConnectInvalidArgument when the session is closed.
    template <typename Encode>
    SimConnectResult request(const Encode& encode) {
        const std::lock_guard lock(mutex);
        if (const SimConnectResult result = stateResult(); result != simConnectOk) {
            return result;
        }
        encode(outbound.tail(), SimConnectWire::RequestHead{nextSendId++, protocolVersion});
        flush();
        return stateResult();
    }

    /// Sends what waits, reads what has arrived, and passes it to `proc` with no lock held. Messages from before the
    /// link's end come first, with success; only a call that finds none reports the loss. A call from inside `proc`, or
    /// from another thread meanwhile, does nothing and succeeds.
    SimConnectResult dispatch(SimConnectDispatchProc proc, void* context);

    /// Sends what the connection still takes, then ends it in order. Drops the messages not yet delivered. A call of
    /// `proc` on another thread still runs to its end.
    void close();

private:
    enum class State {
        Open,
        /// The simulator takes nothing more, but its last messages may still be waiting.
        SendingFailed,
        Lost,
        Closed,
    };

    SimConnectResult dispatchExclusively(SimConnectDispatchProc proc, void* context);
    OpenOutcome awaitAnswer(std::chrono::milliseconds limit);

    // These need the mutex.
    SimConnectResult stateResult() const;
    void flush();
    std::span<const std::uint8_t> nextPiece() const;
    void checkBacklog();
    void receive();
    void lose();

    const SessionLimits limits;
    const std::uint32_t protocolVersion;
    /// The thread that set it owns `inbound`.
    std::atomic<bool> dispatching{false};
    MessageReader inbound{sizeof(SimConnectRecv)};

    /// Guards the members below. Held for one send or for the reads of one dispatch, which don't wait; only the loss of
    /// a pipe may take up to a second. `open` holds it while it waits, but then no other thread has the session.
    std::mutex mutex;
    ByteStream stream;
    std::atomic<State> state{State::Open};
    OutboundBuffer outbound;
    std::uint32_t nextSendId = 1;
    /// When bytes began to wait, or the simulator last took some.
    std::chrono::steady_clock::time_point lastProgress{};
    bool waiting = false;
};
