#pragma once

#include "wire/simconnect_cfg.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

enum class SimulatorRecordKind {
    /// A connection was accepted.
    Connected,
    /// A client introduced itself. `text`: application name, `value`: protocol version.
    Opened,
    /// A connection ended, from either side.
    Closed,
    /// A request for data. `text`: the first variable's name, or the area's name as its creator wrote it, `value`:
    /// period.
    Subscribed,
    /// A client event was fired. `text`: the simulator event's name, `value`: its data.
    ClientEvent,
    /// The module got a command to run code. `text`: the code behind "MF.SimVars.Set.", so that a text which the bridge
    /// writes as "MF.SimVars.Set.1 (>K:X)" is "1 (>K:X)" here.
    Executed,
    /// "MF.DummyCmd".
    Dummy,
    /// Any other text for the module, whole: "MF.Clients.Add.…", "MF.SimVars.Clear", "MF.Ping", unknown ones too.
    Command,
    /// A command area was set to the bytes that it already contained, so the module didn't see the command. `text`: the
    /// command.
    Unchanged,
    /// An exception was sent. `value`: its code, `sendId` and `index`: the request and argument that it is about.
    Exception,
};

/// One thing that the virtual simulator received or answered.
struct SimulatorRecord {
    SimulatorRecordKind kind = SimulatorRecordKind::Connected;
    std::chrono::steady_clock::time_point time;
    /// Counts connections from 1, over all restarts.
    std::uint32_t session = 0;
    std::string text;
    std::uint32_t value = 0;
    std::uint32_t sendId = 0;
    std::uint32_t index = 0;
};

/// The record kind's name as the program prints it: "opened", "client-event".
std::string_view simulatorRecordKindName(SimulatorRecordKind kind);

/// Whether two answers of the module with the same text are equal in all their bytes. The second then doesn't change
/// its area, and no client gets it. The bytes after an answer's end are old memory of the module, so whether they are
/// equal is chance.
enum class ModuleAnswers {
    /// Always.
    Equal,
    /// Never.
    Different,
    /// Unless one of them is the answer to a registration that made a new client. So a client gets the answers to its
    /// first and second registration but not to its third. This was measured with the real module.
    Measured,
};
/// The words for them, in the same order, in the simulator's console and in scenarios.
constexpr std::array<std::string_view, 3> moduleAnswersWords{"equal", "different", "measured"};

struct VirtualSimulatorOptions {
    /// False: the simulator runs without the MobiFlight module, whose areas then don't exist, until `startModule`.
    bool moduleInstalled = true;
};

/// The simulator's side of the SimConnect protocol on 127.0.0.1 or a local pipe, with the battery variable, client
/// events, the MobiFlight module with its areas, and the faults of real simulators. Serves any number of clients on one
/// thread of its own.
///
/// All members may be called from any thread, from inside the record callback too (but for `stop` and the waiting
/// ones, which would wait for themselves there). A control has taken effect when it returns: what it sends is in the
/// connections, or queued behind what a slow client hasn't taken yet.
class VirtualSimulator {
public:
    using RecordCallback = std::function<void(const SimulatorRecord& record)>;
    using RecordPredicate = std::function<bool(const std::vector<SimulatorRecord>& records)>;

    explicit VirtualSimulator(VirtualSimulatorOptions options = {});
    /// Stops.
    ~VirtualSimulator();
    VirtualSimulator(const VirtualSimulator&) = delete;
    VirtualSimulator& operator=(const VirtualSimulator&) = delete;

    /// Listens on the port, 0 for any free one. False with the reason in `error` when it can't, or runs already.
    bool start(std::uint16_t port, std::string& error);
    /// Listens on a local pipe, whose name is given without "\\.\pipe\", instead of a port. False with the reason in
    /// `error` when it can't, as on a system without such pipes, or runs already.
    bool startOnPipe(const std::string& name, std::string& error);
    /// Ends the thread and, without QUIT, all sessions. Records stay; `start` may follow. Idempotent.
    void stop();
    /// The port that `start` took; 0 before the first start, and on a pipe. Stays the same while opens are refused.
    std::uint16_t port() const;
    /// Where clients reach it: the port or the pipe that it was started on.
    SimConnectEndpoint endpoint() const;

    // The aircraft and the module's variables. They outlive sessions, `quit` and `die`.

    /// Sets both of the aircraft's batteries. Off at first.
    void setBattery(bool on);
    /// A variable of the aircraft with its index, such as "LIGHT POTENTIOMETER:3"; 0 at first. Its name's case doesn't
    /// matter. Goes to each client of the module that added "(A:name)" or "(A:name, unit)", whatever the unit;
    /// "ELECTRICAL MASTER BATTERY:1" and the like also to clients that asked the simulator for them.
    void setAircraftVariable(std::string_view name, double value);
    /// A local variable, without "L:", whose name's case doesn't matter. Goes to each client that added "(L:name)".
    void setLVar(std::string_view name, double value);
    /// What the module reads by this code: a variable by itself, as VariableValues::evaluate has it.
    double evaluate(std::string_view code) const;
    /// Fills the area "MobiFlight.LVars" with a zero-padded text, as a module that speaks text there does.
    void setLVarsText(std::string_view text);
    /// Writes a text into "MobiFlight.Response" as if the module had. Writing the same text again changes nothing, so
    /// no client gets it.
    void respond(std::string_view text);
    /// Another program writes a command into "MobiFlight.Command", as in a busy simulator. Both programs are the same
    /// client to the module: "MF.SimVars.Clear" empties the list of both, and "MF.SimVars.Add.…" takes the next place
    /// in it. Recorded under session 0.
    void sendAsOtherClient(std::string_view command);
    /// The other program pings: a command or a confirmation that equals the one before is then a change again.
    void pingModule();

    // Faults of real simulators.

    /// The simulator ends properly: QUIT to all clients, then close. Connections fail until refuseOpens(false), which
    /// starts the simulator again, with empty areas and a module without clients.
    void quit();
    /// The simulator crashes: connections are reset without QUIT; otherwise as `quit`.
    void die();
    /// Connections are closed without QUIT; the simulator runs on and clients may come back.
    void dropSessions();
    /// True: stops listening, so that an open fails at once; open sessions stay. False: listens again on the same port.
    /// Does nothing before `start`.
    void refuseOpens(bool refuse);
    /// New connections are accepted, but what they send is handled (OPEN included) only after this time. Zero at first.
    void delayOpens(std::chrono::milliseconds delay);
    /// Starts the module if it doesn't run. Its areas exist only from then on.
    void startModule();
    /// Ends the module if it runs. It forgets its clients. Its areas stay, but it no longer reads them or writes
    /// values.
    void stopModule();
    bool moduleRunning() const;
    /// Equal at first.
    void setModuleAnswers(ModuleAnswers answers);
    /// True: accepts connections, and closes each without an answer when its client introduces itself (OPEN).
    void hangUpOnOpens(bool hangUp);
    /// Only clients of these versions of the protocol get a session; others get VERSION_MISMATCH and their connection
    /// is closed. At first, all versions.
    void takeProtocols(std::uint32_t oldest, std::uint32_t newest);
    /// The module takes commands, which are recorded, but neither answers nor delivers values.
    void silenceModule(bool silent);
    /// The module answers "MF.Clients.Add.<name>" with "….Error" in place of "….Finished".
    void failRegistrations(bool fail);
    /// Reads nothing from any client while true, so that their sends back up.
    void stopReading(bool stalled);

    // Malformed bytes on the wire.

    /// Sends bytes to every session, after what is already queued.
    void sendRaw(std::span<const std::uint8_t> bytes);
    /// Sends the first half of a message to every session, then closes properly.
    void cutMessage();
    /// From now on, sends each byte separately.
    void sendByteByByte(bool on);

    // What was received.

    /// Everything since construction or the last `clearRecords`, in order.
    std::vector<SimulatorRecord> records() const;
    /// The texts of all records of a kind, in order.
    std::vector<std::string> texts(SimulatorRecordKind kind) const;
    void clearRecords();
    /// Called with each later record, on the simulator's thread, in order, with no lock held. Null: none. A running
    /// call of the former callback may outlast this.
    void setRecordCallback(RecordCallback callback);
    /// Connections now open.
    std::size_t sessionCount() const;

    /// Waits until the predicate is true for the records; false after the timeout. It is called under a lock and must
    /// not call the simulator.
    bool waitFor(const RecordPredicate& predicate, std::chrono::milliseconds timeout = defaultTimeout) const;
    /// Waits until `count` records of that kind and text have come.
    bool waitForText(SimulatorRecordKind kind, std::string_view text, std::size_t count = 1,
                     std::chrono::milliseconds timeout = defaultTimeout) const;
    /// Waits until `count` records of that kind have come.
    bool waitForKind(SimulatorRecordKind kind, std::size_t count = 1,
                     std::chrono::milliseconds timeout = defaultTimeout) const;
    /// Waits until exactly `count` connections are open.
    bool waitForSessionCount(std::size_t count, std::chrono::milliseconds timeout = defaultTimeout) const;

    /// All versions of the protocol.
    static constexpr std::uint32_t oldestProtocol = 2;
    static constexpr std::uint32_t newestProtocol = 6;

    /// Long enough for a busy machine under a sanitizer.
    static constexpr std::chrono::milliseconds defaultTimeout{60000};

private:
    class Impl;
    std::unique_ptr<Impl> impl;
};
