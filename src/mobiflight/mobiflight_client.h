#pragma once

#include "config/app_config.h"
#include "mobiflight/channels.h"
#include "mobiflight/rate_limit.h"
#include "mobiflight/registration_renewal.h"
#include "mobiflight/rpn_queue.h"
#include "platform/platform.h"
#include "platform/worker.h"
#include "sim/simconnect_client.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

using LVarHandler = std::function<void(const std::string& text)>;

/// The bridge's client of the MobiFlight module: registers as its client over three client data areas, queues, merges
/// and paces RPN commands, and reads the one variable it subscribes to. Operations may be called from any thread.
class MobiFlightClient {
public:
    MobiFlightClient(SimConnectLibrary library, Host host);
    ~MobiFlightClient();
    MobiFlightClient(const MobiFlightClient&) = delete;
    MobiFlightClient& operator=(const MobiFlightClient&) = delete;

    /// Receives each LVar text on the SimConnect worker, inside the dispatch: it must not block.
    void setLVarHandler(LVarHandler handler);

    /// Before `start` only. A client with an empty `lightVariable` adds no variable and clears none.
    void setExtensions(const ExtensionsConfig& config);

    /// True also when the configuration disables the client; nothing runs then. False with `error` set when it already
    /// runs or the system refuses a thread. `client` is not owned and outlives this object's run.
    bool start(SimConnectClient* client, const MobiFlightConfig& config, std::string& error);

    /// Idempotent.
    void stop();

    /// The session has opened or ended. Called on the SimConnect worker; the last call may come from the main thread.
    /// Forgets every queued command; a new session attaches to the areas and registers.
    void onSimConnectState(bool nowConnected);

    /// A client data block, without the message's header; on the SimConnect worker.
    void onClientData(std::uint32_t requestId, const std::uint8_t* data, std::uint32_t size);

    /// The module has confirmed the registration in this session.
    bool isReady() const;

    /// Queues an RPN command `amount` times (only for `Encoder`; the other kinds once; 0 queues nothing). Never waits
    /// for the rate limit or for the simulator. False with `error` set only for a disabled or stopped client and an
    /// empty text.
    bool queueRpn(const std::string& rpn, RpnKind kind, std::uint32_t amount, std::string& error);

    /// Writes a command on the caller's thread, bypassing the queue and the rate limit. False with `error` set, or with
    /// an empty `error` when the write failed: the log then already has the cause.
    bool sendRpnNow(const std::string& rpn, std::string& error);

    /// The same for any text that the module understands, followed by a dummy like an RPN command.
    bool sendTextNow(const std::string& text, std::string& error);

    /// Removes the command from the queue. One that is in flight isn't stopped.
    void cancelRpn(const std::string& rpn);

private:
    const SimConnectLibrary library;
    const Host host;

    // Written by `start` before the worker runs. Only `enabled` is read by others before they see the worker running.
    SimConnectClient* simConnect = nullptr;
    std::atomic<bool> enabled{false};
    std::string clientName;
    std::string commandChannel;
    std::string responseChannel;
    std::string lvarsChannel;
    std::int32_t rpnRateLimitMs = 0;
    /// A copy of the setting, which nothing here reads: the mapping engine repeats the holds.
    std::int32_t mapHoldRepeatMs = 0;
    ExtensionsConfig extensions;

    Worker worker;
    std::atomic<bool> ready{false};
    std::atomic<bool> simConnected{false};

    // No mutex is held while the client attaches: the simulator's library may have a lock of its own, and one of the
    // two threads that attach is inside its dispatch.
    /// The attachments besides the first of each session, which is number 0. Never reset: an attachment that began in
    /// an earlier session can't take a number of this one's.
    std::atomic<std::uint32_t> furtherAttachments{0};
    /// The attachment whose command area takes the commands. Written under the queue mutex, read without it.
    std::atomic<std::uint32_t> commandAttachment{0};

    // Guards `queue`, `renewal` and `sessionNumber`. May be taken under the send mutex, never the other way round;
    // nothing but the clock is called under it.
    std::mutex queueMutex;
    /// Wakes the worker, which alone waits on it.
    std::condition_variable queueCondition;
    RpnQueue queue;
    /// Idle unless the extension is on.
    RegistrationRenewal renewal;
    /// Counts the changes of the session.
    std::uint32_t sessionNumber = 0;

    // Guards no member: its holder may write to the command area. Held across a command and its dummy, and across a
    // whole burst of detents, so that two senders can't interleave.
    std::mutex sendMutex;
    RateLimit rateLimit;

    // Guards `lvarHandler`, which is copied under it and called without it.
    std::mutex handlerMutex;
    LVarHandler lvarHandler;

    // Start and messages (mobiflight_client.cpp).
    void configure(SimConnectClient* client, const MobiFlightConfig& config);
    void onLVars(const std::uint8_t* data, std::uint32_t size);
    /// Needs the queue mutex held.
    void forgetSession();

    // Attachment and registration (mobiflight_client_registration.cpp).
    void beginSession();
    void onResponse(const std::string& text);
    void onConfirmation();
    /// `ownAttachment`: the attachment to the client's own channels; none with the shared ones.
    void becomeReady(std::optional<std::uint32_t> ownAttachment);
    void renewRegistrationIfDue();
    void renewRegistration(std::uint32_t session);
    // False with `error` set when a call to the simulator fails.
    bool attachToSharedChannels(std::uint32_t attachment, std::string& error);
    bool attachToOwnChannels(std::uint32_t attachment, std::string& error);
    // These need the queue mutex held.
    bool handshakeWaits() const;
    void queueRegistration(std::uint32_t attachment);
    void queueHandshake(const std::string& text, bool sendDummy = false);

    // The callers' side of the queue, the worker that serves it, and the send path (mobiflight_client_commands.cpp).
    bool checkRunning(std::string& error) const;
    bool checkReady(std::string& error) const;
    MobiFlightCommand rpnCommand(const std::string& rpn, RpnKind kind) const;
    void workerLoop();
    /// False when there is none: the client stops, or a registration is due.
    bool takeNext(MobiFlightCommand& command);
    void waitForWork(std::unique_lock<std::mutex>& lock);
    void serve(const MobiFlightCommand& command);
    void retryLater(std::chrono::milliseconds delay);
    void waitForRateLimit();
    /// The command in flight was queued in a session that has ended, and another one has begun.
    bool inFlightIsStale();
    bool sendCommand(const MobiFlightCommand& command);
    // These need the send mutex held.
    bool sendBurst(const MobiFlightCommand& command);
    bool sendOnce(const MobiFlightCommand& command);
    std::int32_t takeDetents(const std::string& text);
};
