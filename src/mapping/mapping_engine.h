#pragma once

#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "hid/hid_manager.h"
#include "hid/hid_protocol.h"
#include "mobiflight/mobiflight_client.h"
#include "platform/platform.h"
#include "sim/shared_sim_state.h"
#include "sim/simconnect_client.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

/// A board's event on its way to the event worker.
struct QueuedHidEvent {
    HidProtocol::HidEvent event;
    std::string deviceName;
    std::uint32_t index = 0;
};

/// A map button that is held down. Times are the monotonic clock's nanoseconds.
struct ManagedMapHold {
    std::string controlName;
    std::string role;
    /// The RPN text to send each period.
    std::string command;
    /// When the next send is due; 0 until it is set.
    std::int64_t nextDue = 0;
};

/// Decides what a board's events mean and what a board shows. Three workers: one takes the events strictly in order,
/// one repeats held map buttons, one keeps the boards' lights in step with the simulator. `submitEvent`,
/// `requestOutputUpdate` and `onBacklightPayload` may be called from any thread. No thread ever holds two of its
/// mutexes at once, nor any of them across a call to another subsystem.
class MappingEngine {
public:
    explicit MappingEngine(Host host);
    ~MappingEngine();
    MappingEngine(const MappingEngine&) = delete;
    MappingEngine& operator=(const MappingEngine&) = delete;

    /// The references are not owned, may be null, and must outlive the engine's run. False with `error` set when it
    /// runs already or no thread can be had.
    bool start(const AppConfig* newConfig, HidManager* newHid, SimConnectClient* newSimConnect,
               MobiFlightClient* newMobiflight, const ButtonConfig* newButtons, const HidEventMap* newEventMap,
               SharedSimState* newSimState, std::string& error);

    /// Idempotent. Queued events stay where they are.
    void stop();

    /// Queues an event; a button's release first removes the queued hold repeats of its own button. Returns quickly: no
    /// lookup, no logging, no I/O. While the engine isn't running the event is dropped.
    void submitEvent(const HidProtocol::HidEvent& event, const std::string& deviceName, int index);

    /// Has the lights of all boards computed anew once no further request has come for `outputs.debounceMs`.
    void requestOutputUpdate();

    /// An LVar text from the module.
    void onBacklightPayload(const std::string& text);

private:
    static constexpr std::int64_t nanosecondsPerMs = 1'000'000;

    const Host host;

    // Written by `start` before any worker runs.
    const AppConfig* config = nullptr;
    HidManager* hid = nullptr;
    SimConnectClient* simConnect = nullptr;
    MobiFlightClient* mobiflight = nullptr;
    const ButtonConfig* buttons = nullptr;
    const HidEventMap* eventMap = nullptr;
    SharedSimState* simState = nullptr;

    std::atomic<bool> running{false};

public:
    /// Whether the SimConnect session is up; stored by App on every change, read by the output worker.
    std::atomic<bool> simConnected{false};

private:
    std::thread eventThread;
    // Guards `eventQueue`.
    std::mutex queueMutex;
    std::condition_variable queueCondition;
    std::deque<QueuedHidEvent> eventQueue;

    std::thread holdThread;
    // Guards `activeHolds`.
    std::mutex holdMutex;
    std::condition_variable holdCondition;
    std::unordered_map<std::string, ManagedMapHold> activeHolds;

    std::thread outputThread;
    // Guards the two below.
    std::mutex outputMutex;
    std::condition_variable outputCondition;
    bool outputDirty = false;
    std::int64_t lastOutputRequest = 0;

    // Guards `ledPauses`: device key to the time until which the board gets no light command.
    std::mutex ledPauseMutex;
    std::unordered_map<std::string, std::int64_t> ledPauses;

    /// The working values of one event; see event_resolution.cpp.
    struct Resolution;

    // Core (mapping_engine.cpp).

    /// The simulator's event for a control that the command file doesn't list, by the control's number.
    static const std::unordered_map<std::uint16_t, std::string>& apEventTable();
    void eventWorker();
    void wakeWorkers();
    void joinWorkers();
    /// Waits once, at most until `deadline`. False, without waiting, when that has passed.
    bool waitBefore(std::int64_t deadline, std::condition_variable& condition,
                    std::unique_lock<std::mutex>& lock) const;

    // Event resolution (event_resolution.cpp), on the event worker.
    void handleEvent(const HidProtocol::HidEvent& event, const std::string& deviceName, int index);
    Resolution resolve(const HidProtocol::HidEvent& event, const std::string& deviceName, int index) const;
    std::string chooseCommand(Resolution& resolution) const;
    void routeToMobiFlight(Resolution& resolution);
    void routeToSimConnect(Resolution& resolution);
    static void logEvent(const Resolution& resolution, bool withConfiguredRole);

    // Managed map controls (managed_map.cpp), on the event worker and the hold worker.
    void handleManagedMapEvent(HidProtocol::HidEventAction actionType, const HidProtocol::HidEvent& event,
                               const std::string& deviceName, int index, const std::string& controlName,
                               const std::string& role);
    void sendMapPress(const std::string& controlName, const std::string& command);
    void startHold(const std::string& key, const std::string& controlName, const std::string& role,
                   const std::string& command);
    void stopHold(const std::string& key);
    void holdWorker();
    /// Keys and commands of the holds whose time has come, each set to its next time. Needs the hold mutex.
    std::vector<std::pair<std::string, std::string>> takeDueHolds(std::int64_t repeatNs);
    void sendDueHolds(const std::vector<std::pair<std::string, std::string>>& due);
    void cancelControlCommands(const std::string& controlName, const std::string& role);
    std::int64_t holdRepeatNs() const;

    // Output state (output_worker.cpp), on the output worker; the pause begins on the event worker.
    void outputWorker();
    /// Waits until a push is due. False when the worker is to end instead.
    bool waitForOutputTurn();
    void pushOutputs();
    void pauseOutput(const std::string& deviceName, int index);
    bool isHeldOff(const std::string& deviceName, int index);
};
