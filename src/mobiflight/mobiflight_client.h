#pragma once

#include "config/app_config.h"
#include "mobiflight/channels.h"
#include "mobiflight/registration_renewal.h"
#include "platform/platform.h"
#include "sim/simconnect_client.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <unordered_set>

enum class RpnKind : std::int32_t {
    /// Every command is its own queue entry.
    Normal = 0,
    /// At most one entry per text waits.
    Hold = 1,
    /// At most one entry per text waits; the detents are counted beside it.
    Encoder = 2,
};

/// One entry of the command queue. Times are the monotonic clock's nanoseconds.
struct MobiFlightCommand {
    /// The whole text, prefix included.
    std::string text;
    /// Must wait until the module has confirmed the registration.
    bool needsReady = false;
    /// Followed by "MF.DummyCmd".
    bool sendDummy = false;
    RpnKind kind = RpnKind::Normal;
    /// Carried along; no decision reads it.
    std::int64_t queuedAt = 0;
};

/// The detents of one encoder command that wait to be sent.
struct EncoderPending {
    std::int32_t pendingCount = 0;
    /// An entry for this text is in the queue.
    bool queued = false;
    /// The worker has taken the entry out.
    bool inFlight = false;
    /// When `pendingCount` last rose from 0.
    std::int64_t firstQueuedAt = 0;
};

using LVarHandler = std::function<void(const std::string& text)>;

/// The bridge's end of the MobiFlight module: registers as its client over three client data areas, queues, merges and
/// paces RPN commands, and reads the one variable it subscribes to. Operations may be called from any thread.
class MobiFlightClient {
public:
    MobiFlightClient(SimConnectLibrary simLibrary, Host hostRecord);
    ~MobiFlightClient();
    MobiFlightClient(const MobiFlightClient&) = delete;
    MobiFlightClient& operator=(const MobiFlightClient&) = delete;

    /// Receives each LVar text on the SimConnect worker, inside the dispatch: it must not block.
    void setLVarHandler(LVarHandler handler);

    /// Before `start` only.
    void setExtensions(const ExtensionsConfig& newExtensions);

    /// True also when the configuration disables the client; nothing runs then. False with `error` set when it runs
    /// already or no thread can be had. `client` is not owned and outlives this object's run.
    bool start(SimConnectClient* client, const MobiFlightConfig& config, std::string& error);

    /// Idempotent.
    void stop();

    /// News of the session, on the SimConnect worker (the last one perhaps on the main thread). Forgets every queued
    /// command; a new session attaches to the areas and registers.
    void onSimConnectState(bool nowConnected);

    /// A client data block, without the message's header; on the SimConnect worker.
    void onClientData(std::uint32_t requestId, const std::uint8_t* data, std::uint32_t size);

    /// The module has confirmed the registration in this session.
    bool isReady() const;

    /// Queues an RPN command `amount` times (which counts for `Encoder` alone; 0 queues nothing). Never waits for the
    /// rate limit or for the simulator. False with `error` set only for a disabled or stopped client and an empty text.
    bool queueRpn(const std::string& rpn, RpnKind kind, std::uint32_t amount, std::string& error);

    /// Writes a command on the caller's thread, past the queue and the rate limit. False with `error` set, or with an
    /// empty `error` when the write failed, which is then in the log already.
    bool sendRpnNow(const std::string& rpn, std::string& error);

    /// Takes the command out of the queue. One that the worker already holds in its hand is not stopped.
    void cancelRpn(const std::string& rpn);

private:
    const SimConnectLibrary library;
    const Host host;

    // Written by `start` before the worker runs. Only `enabled` is read by others before they have seen `running`.
    SimConnectClient* simConnect = nullptr;
    std::atomic<bool> enabled{false};
    std::string clientName;
    std::string commandChannel;
    std::string responseChannel;
    std::string lvarsChannel;
    std::int32_t rpnRateLimitMs = 0;
    std::int32_t mapHoldRepeatMs = 0;
    ExtensionsConfig extensions;

    std::atomic<bool> running{false};
    std::atomic<bool> ready{false};
    std::atomic<bool> simConnected{false};
    std::thread worker;

    // No mutex is held while the client attaches: the simulator's library may have a lock of its own, and one of the
    // two threads that attach is inside its dispatch.
    /// The attachments besides the first of each session, which is number 0. Never reset: an attachment that was begun
    /// in an earlier session can't take a number of this one's.
    std::atomic<std::uint32_t> furtherAttachments{0};
    /// The attachment whose command area takes the commands. Written under the queue mutex, read without it.
    std::atomic<std::uint32_t> commandAttachment{0};

    // Guards the queue, the three tables and `renewal`. May be taken under the send mutex, never the other way round;
    // nothing but the clock is called under it.
    std::mutex queueMutex;
    std::condition_variable queueCondition;
    std::deque<MobiFlightCommand> commandQueue;

    // Held over a command and its dummy, so that two senders can't interleave between them.
    std::mutex sendMutex;

    // Under the queue mutex: texts of Hold commands that wait, and that the worker has taken out.
    std::unordered_set<std::string> pendingHolds;
    std::unordered_set<std::string> inFlightHolds;
    std::unordered_map<std::string, EncoderPending> encoderPending;
    // Under the queue mutex: the queue was emptied since the worker took its command out.
    bool inFlightIsStale = false;
    // Under the queue mutex: idle unless the extension is on.
    RegistrationRenewal renewal;
    // Under the queue mutex: counts the changes of the session.
    std::uint32_t sessionNumber = 0;

    // Written under the send mutex, read by the worker without it: a stale value only changes one delay.
    std::atomic<std::int64_t> lastSendAt{0};
    std::atomic<bool> hasLastSend{false};

    // Guards `lvarHandler`, which is copied under it and called outside.
    std::mutex handlerMutex;
    LVarHandler lvarHandler;

    /// Reaches the states that no sequence of calls from outside can bring about.
    friend struct MobiFlightClientAccess;

    // Start and messages (mobiflight_client.cpp).
    void configure(SimConnectClient* client, const MobiFlightConfig& config);
    void onResponse(const std::string& text);
    void onLVars(const std::uint8_t* data, std::uint32_t size);
    /// Needs the queue mutex held.
    void clearQueue();

    // Attachment and registration (registration.cpp).
    void beginSession();
    void onConfirmation();
    /// `ownAttachment`: to the client's own channels; none with the shared ones.
    void becomeReady(std::optional<std::uint32_t> ownAttachment);
    void renewRegistrationIfDue();
    void renewRegistration(std::uint32_t session);
    // False with `error` set when a call of the simulator's fails.
    bool attachToSharedChannels(std::uint32_t attachment, std::string& error);
    bool attachToOwnChannels(std::uint32_t attachment, std::string& error);
    bool attach(const ChannelNames& names, std::uint32_t attachment, std::string& error);
    // These need the queue mutex held.
    bool handshakeWaits() const;
    void queueRegistration(std::uint32_t attachment);
    void queueHandshake(const std::string& text, bool sendDummy = false);

    // The queue and its worker (command_queue.cpp).
    bool checkRunning(std::string& error) const;
    MobiFlightCommand rpnCommand(const std::string& rpn, RpnKind kind) const;
    void workerLoop();
    /// False when there is none: the client stops, or a registration is due.
    bool takeNext(MobiFlightCommand& command);
    void waitForWork(std::unique_lock<std::mutex>& lock);
    void serve(MobiFlightCommand& command);
    void waitForRateLimit();
    /// The command in hand was queued in a session that has ended, and another one is up.
    bool handIsFromEarlierSession();
    void putBack(MobiFlightCommand& command);
    void finish(MobiFlightCommand& command);
    /// Whether a command that waits or is in hand stands for this one too; otherwise enters it in the tables. Needs the
    /// queue mutex held.
    bool absorb(MobiFlightCommand& command, std::uint32_t amount);
    /// Of a queue that isn't empty. Needs the queue mutex held.
    std::deque<MobiFlightCommand>::iterator nextInQueue();

    // The way to the module (send_path.cpp).
    bool sendCommand(const MobiFlightCommand& command);
    // These need the send mutex held.
    bool sendBurst(const MobiFlightCommand& command);
    bool sendOnce(const MobiFlightCommand& command);
    /// To the command area of that attachment.
    bool writeCommandArea(std::uint32_t attachment, std::string_view text, std::string& error);
    std::int32_t takeDetents(const std::string& text);
};
