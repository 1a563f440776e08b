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

/// When a simulator that stops reading is given up. A stall below both costs nothing: what was sent meanwhile waits.
struct SessionLimits {
    /// It took no byte for so long although some were waiting. A simulator that loads an aircraft stalls for seconds.
    std::chrono::milliseconds stall{30000};
    /// So many bytes are waiting: hours of a busy cockpit.
    std::size_t backlog = 16UL * 1024UL * 1024UL;
};

/// What a simulator made of the request to open a session.
enum class OpenOutcome {
    /// It agreed, or has said nothing yet.
    Usable,
    /// It doesn't speak the session's version of the protocol; it may speak another.
    VersionMismatch,
    /// It refused with another exception, or ended the connection.
    Refused,
};

/// Hands the reader's whole messages to `proc` in order, for as long as `proceed` holds. Returns how many.
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

/// One connection to a simulator. Has no thread: it moves bytes when it is called, as far as the connection takes them,
/// and never blocks. Any thread may call any member.
class WireSession {
public:
    /// All requests are made in this version of the protocol.
    explicit WireSession(ByteStream connected, SessionLimits sessionLimits = {},
                         std::uint32_t protocol = SimConnectWire::protocolVersions.front());

    /// Sends OPEN under this name, which fits its field, and waits up to the limit for the first message. Whatever
    /// arrived meanwhile is handed out by the first dispatch. Only as the first call, before other threads have the
    /// session.
    OpenOutcome open(const char* name, std::chrono::milliseconds answerLimit);

    /// Appends a request, made by `encode(bytes, head)`, and sends what the connection takes.
    /// simConnectRemoteDisconnect: the link is lost. simConnectInvalidArgument: the session is closed.
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

    /// Sends what waits, reads what has come, and hands it to `proc` with no lock held. What came before the link's end
    /// is handed out first, with success; only a call that finds nothing more reports the loss. A call from inside
    /// `proc`, or from another thread meanwhile, does nothing and succeeds.
    SimConnectResult dispatch(SimConnectDispatchProc proc, void* context);

    /// Sends what the connection still takes and ends the connection in order. Messages not yet handed out are dropped;
    /// only a call of `proc` that another thread is in goes on to its end.
    void close();

private:
    enum class State {
        Open,
        /// The simulator takes nothing more, but what it sent before may still be waiting.
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

    /// Guards the members below. Held for one send or for the reads of one dispatch, which never wait; only the loss of
    /// a pipe may take up to a second. `open` holds it while it waits, when nobody else has the session.
    std::mutex mutex;
    ByteStream stream;
    std::atomic<State> state{State::Open};
    OutboundBuffer outbound;
    std::uint32_t nextSendId = 1;
    /// When the waiting bytes began to wait, or some last went.
    std::chrono::steady_clock::time_point lastProgress{};
    bool waiting = false;
};
