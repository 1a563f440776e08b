#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
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
    /// When the command, or the first of its detents, was queued. Kept for debugging; no decision reads it.
    std::int64_t queuedAt = 0;
};

/// The detents of one encoder command that wait to be sent. Its entry is either in the queue or in flight, never both:
/// detents that come meanwhile only raise the count.
struct EncoderPending {
    std::int32_t pendingCount = 0;
    /// An entry for this text is in the queue.
    bool queued = false;
    /// The worker has taken the entry out.
    bool inFlight = false;
    /// When `pendingCount` last rose from 0.
    std::int64_t firstQueuedAt = 0;
};

/// The commands that wait for the module, and the one in flight: taken out by the worker and neither put back nor
/// finished yet. Merges like commands, so that a fast knob or a held button can't flood the simulator; it has no size
/// limit otherwise. Has no thread, clock or lock: the caller synchronises, and times come with the commands.
class RpnQueue {
public:
    /// Adds the command. `amount` is the number of detents of an `Encoder`; other kinds ignore it, except that 0 adds
    /// nothing for any kind. True when the queue has a new entry; false when an existing entry, or the command in
    /// flight, covers this one.
    bool enqueue(MobiFlightCommand command, std::uint32_t amount = 1);

    /// Takes the next command out and copies it to `command`; it is in flight from now on. False when nothing waits.
    /// `ready`: the module has confirmed the registration. Nothing may be in flight.
    bool takeNext(bool ready, MobiFlightCommand& command);

    /// The detents counted for an encoder command's text, which are the caller's to send now.
    std::int32_t takeDetents(const std::string& text);

    /// Returns the command in flight, which couldn't be sent yet, to the front. Does nothing after `clear`.
    void putBack();

    /// Ends the command in flight, which was sent or failed. Detents that were counted since go to the back of the
    /// queue. Does nothing after `clear`.
    void finish();

    /// False once `clear` has emptied the queue since the command was taken out.
    bool hasInFlight() const { return inFlight.has_value(); }

    /// Removes the waiting commands of every kind with this text, and the detents counted for it. The command in flight
    /// isn't stopped.
    void cancel(const std::string& text);

    /// Empties the queue and forgets the command in flight.
    void clear();

    const std::deque<MobiFlightCommand>& waiting() const { return commands; }

private:
    std::deque<MobiFlightCommand> commands;
    std::unordered_set<std::string> pendingHolds;
    std::unordered_map<std::string, EncoderPending> encoderPending;
    std::optional<MobiFlightCommand> inFlight;

    bool isAbsorbed(const MobiFlightCommand& command, std::uint32_t amount);
    bool addToDetents(const MobiFlightCommand& command, std::uint32_t amount);
    std::deque<MobiFlightCommand>::iterator nextEntry(bool ready);
    void leaveTables(MobiFlightCommand& command);
};
