#include "wire/wire_session.h"

#include "wire/deadline.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t initialBacklog = 64UL * 1024UL;
constexpr std::size_t readPiece = 64UL * 1024UL;
// Ends a dispatch however fast the simulator sends. The next one reads on.
constexpr std::size_t readsPerDispatch = 16;

constexpr std::uint32_t versionMismatch = 5;

// OPEN is the only request so far, so an exception is about it. A simulator sends anything else only once it agrees.
OpenOutcome outcomeOf(std::span<const std::uint8_t> firstMessage) {
    if (SimConnectWire::numberAt(firstMessage, offsetof(SimConnectRecv, dwID)) != simConnectRecvException) {
        return OpenOutcome::Usable;
    }
    const bool hasCode = firstMessage.size() >= sizeof(SimConnectRecv) + sizeof(std::uint32_t);
    return hasCode && SimConnectWire::numberAt(firstMessage, sizeof(SimConnectRecv)) == versionMismatch
               ? OpenOutcome::VersionMismatch
               : OpenOutcome::Refused;
}

// Lets one dispatch at a time into a session. Lets the next one in even when the callback throws.
class DispatchTurn {
public:
    explicit DispatchTurn(std::atomic<bool>& flag)
        : flag(flag), taken(!flag.exchange(true, std::memory_order_acquire)) {}
    ~DispatchTurn() {
        if (taken) {
            flag.store(false, std::memory_order_release);
        }
    }
    DispatchTurn(const DispatchTurn&) = delete;
    DispatchTurn& operator=(const DispatchTurn&) = delete;

    bool isMine() const { return taken; }

private:
    std::atomic<bool>& flag;
    bool taken;
};

} // namespace

WireSession::WireSession(ByteStream stream, SessionLimits limits, std::uint32_t protocolVersion)
    : limits(limits), protocolVersion(protocolVersion), stream(std::move(stream)) {
    outbound.tail().reserve(initialBacklog);
}

OpenOutcome WireSession::open(const char* name, std::chrono::milliseconds answerLimit) {
    const SimConnectResult sent = request([&](auto& out, auto head) { SimConnectWire::appendOpen(out, head, name); });
    return sent == simConnectOk ? awaitAnswer(answerLimit) : OpenOutcome::Refused;
}

OpenOutcome WireSession::awaitAnswer(std::chrono::milliseconds limit) {
    const Clock::time_point deadline = Clock::now() + limit;
    const std::lock_guard lock(mutex);
    for (;;) {
        flush();
        receive();
        if (const auto message = inbound.peek()) {
            return outcomeOf(*message);
        }
        if (state != State::Open || inbound.broken()) {
            return OpenOutcome::Refused;
        }
        const int left = millisecondsLeft(deadline);
        if (left == 0) {
            return OpenOutcome::Usable;
        }
        stream.awaitData(std::chrono::milliseconds(left));
    }
}

SimConnectResult WireSession::stateResult() const {
    switch (state.load()) {
    case State::Open:
        return simConnectOk;
    case State::Closed:
        return simConnectInvalidArgument;
    case State::SendingFailed:
    case State::Lost:
        break;
    }
    return simConnectRemoteDisconnect;
}

// A simulator may read its pipe message by message, and each send makes one, so a pipe gets one request per send.
std::span<const std::uint8_t> WireSession::nextPiece() const {
    const auto pending = outbound.pending();
    return stream.keepsSendsApart()
               ? pending.first(std::min<std::size_t>(SimConnectWire::numberAt(pending, 0), pending.size()))
               : pending;
}

void WireSession::flush() {
    while (state == State::Open && !outbound.pending().empty()) {
        const Transfer transfer = stream.send(nextPiece());
        if (transfer.status == TransferStatus::WouldBlock) {
            checkBacklog();
            return;
        }
        if (transfer.status != TransferStatus::Done) {
            state = State::SendingFailed;
            return;
        }
        outbound.consume(transfer.count);
        waiting = false;
    }
}

// Measures the stall from the first send that would block. Nothing shows when the simulator really stopped reading.
void WireSession::checkBacklog() {
    const Clock::time_point now = Clock::now();
    if (!waiting) {
        waiting = true;
        lastProgress = now;
    }
    if (now - lastProgress >= limits.stall || outbound.pending().size() > limits.backlog) {
        lose();
    }
}

void WireSession::receive() {
    for (std::size_t reads = 0; reads < readsPerDispatch; ++reads) {
        const Transfer transfer = stream.receive(inbound.prepare(readPiece));
        switch (transfer.status) {
        case TransferStatus::Done:
            inbound.commit(transfer.count);
            break;
        case TransferStatus::WouldBlock:
            if (state == State::SendingFailed) {
                lose();
            }
            return;
        case TransferStatus::Ended:
        case TransferStatus::Failed:
            lose();
            return;
        }
    }
}

void WireSession::lose() {
    state = State::Lost;
    stream.close();
}

SimConnectResult WireSession::dispatch(SimConnectDispatchProc proc, void* context) {
    const DispatchTurn turn(dispatching);
    return turn.isMine() ? dispatchExclusively(proc, context) : simConnectOk;
}

SimConnectResult WireSession::dispatchExclusively(SimConnectDispatchProc proc, void* context) {
    {
        const std::lock_guard lock(mutex);
        flush();
        if (state == State::Open || state == State::SendingFailed) {
            receive();
        }
    }
    const std::size_t count = handOutMessages(inbound, proc, context, [this] { return state.load() != State::Closed; });
    const std::lock_guard lock(mutex);
    if (inbound.broken() && state != State::Closed) {
        lose();
    }
    // The simulator's last messages are a success, also when the link is already lost. The next call reports that.
    if (count > 0 || state == State::SendingFailed) {
        return simConnectOk;
    }
    return stateResult();
}

void WireSession::close() {
    const std::lock_guard lock(mutex);
    flush();
    if (state == State::Open && stream.endSending()) {
        // Closing a socket with unread bytes resets the connection, which may lose the last requests.
        std::array<std::uint8_t, 4096> unread{};
        for (std::size_t reads = 0; reads < readsPerDispatch; ++reads) {
            if (stream.receive(unread).status != TransferStatus::Done) {
                break;
            }
        }
    }
    stream.close();
    state = State::Closed;
}
