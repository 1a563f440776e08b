#pragma once

#include "platform/platform.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>

using ConnectionCallback = std::function<void(bool connected)>;
using DeviceReadyCallback = std::function<bool()>;
using BatteryCallback = std::function<void(bool on)>;
/// `data` is the block behind the message's header, valid during the call; `size` is never 0.
using ClientDataCallback = std::function<void(std::uint32_t requestId, const std::uint8_t* data, std::uint32_t size)>;
using QuitCallback = std::function<void()>;

/// Keeps one session with the simulator: waits for a board and for the simulator's process, opens the session, polls it
/// for messages, and goes back to waiting when it ends. Callbacks run on its worker with no lock held; the last
/// `ConnectionCallback` may run on the thread that calls `stop`. Operations may be called from any thread.
class SimConnectClient {
public:
    SimConnectClient(SimConnectLibrary simLibrary, Host hostRecord);
    ~SimConnectClient();
    SimConnectClient(const SimConnectClient&) = delete;
    SimConnectClient& operator=(const SimConnectClient&) = delete;

    /// False with `error` set when it is running already or no thread can be had.
    bool start(const std::string& name, ConnectionCallback onConnection, DeviceReadyCallback deviceReady,
               std::string& error);

    /// Idempotent. Waits until the worker comes out of its sleep, up to 30 seconds.
    void stop();

    /// Which of the aircraft's batteries is watched, counted from 1. Before `start` only.
    void setBatteryIndex(int index);
    void setBatteryCallback(BatteryCallback newCallback);
    void setQuitCallback(QuitCallback newCallback);
    void setClientDataCallback(ClientDataCallback newCallback);

    bool isConnected() const;

    /// Fires a named event on the user's aircraft. The simulator always gets data 0.
    bool transmitEvent(const std::string& eventName, std::uint32_t data, std::string& error);

    // The client data operations. False with `error` set without a session or when the call fails.
    bool mapClientDataName(const std::string& name, std::uint32_t clientDataId, std::string& error);
    /// Offset 0 is sent whatever `offset` is.
    bool addClientDataDefinition(std::uint32_t definitionId, std::uint32_t offset, std::uint32_t size,
                                 std::string& error);
    bool requestClientData(std::uint32_t clientDataId, std::uint32_t requestId, std::uint32_t definitionId,
                           std::string& error);

    /// The session's handle, or null. It may be closed by another thread at any moment; a call on it then fails.
    SimConnectHandle connectedHandle();

private:
    const SimConnectLibrary library;
    const Host host;

    std::atomic<bool> running{false};
    std::atomic<bool> connected{false};
    std::thread worker;
    SimConnectHandle handle = nullptr;

    /// The library's notice is in the log. Touched by the worker alone.
    bool noticeLogged = false;

    // Written by `start` before the worker runs.
    std::string clientName;
    ConnectionCallback connectionCallback;
    DeviceReadyCallback deviceReadyCallback;

    int batteryIndex = 2;

    BatteryCallback batteryCallback;
    ClientDataCallback clientDataCallback;
    QuitCallback quitCallback;

    // Never cleared.
    std::atomic<bool> shutdownRequested{false};
    std::atomic<bool> everConnected{false};

    // Guards `handle`, the three callbacks above, `eventIds` and `nextEventId`. Held for short stretches, never across
    // a callback, and across two library calls only: mapping an event's name, so that two threads can't map it twice,
    // and closing a surplus handle.
    std::mutex mutex;
    std::unordered_map<std::string, std::uint32_t> eventIds;
    std::uint32_t nextEventId = 1;

    /// What the worker remembers from turn to turn; touched by the worker alone.
    struct WorkerState {
        bool waitingForSim = false;
        bool waitingForDevice = false;
        std::int32_t backoffMs = 0;
    };

    /// Reaches the states that no sequence of calls from outside can bring about.
    friend struct SimConnectClientAccess;

    // The worker (simconnect_client.cpp).
    void workerLoop();
    void disconnectAfterException();
    void workerStep(WorkerState& state);
    void pollSession();
    bool deviceAttached(WorkerState& state);
    void waitForSimulator(WorkerState& state);
    void tryOpen(WorkerState& state);
    void sleepBackoff(WorkerState& state);
    void requestShutdown();

    // The session (session.cpp).
    bool openSession(std::string& error);
    void logNoticeOnce();
    bool adoptHandle(SimConnectHandle newHandle);
    void watchBattery();
    bool defineBattery(std::string& error);
    bool requestBattery(std::string& error);
    SimConnectHandle batteryHandle(std::string& error);
    SimConnectHandle currentHandle();
    void disconnect(const std::string& reason);
    static void dispatch(SimConnectRecv* message, std::uint32_t size, void* context);
    void handleMessage(const SimConnectRecv* message, std::uint32_t size);
    void handleBattery(const SimConnectRecv* message, std::uint32_t size);
    void handleClientData(const SimConnectRecv* message, std::uint32_t size);

    // What others ask of the session (client_operations.cpp).
    SimConnectHandle usableHandle(std::string& error);
    bool resolveEvent(const std::string& eventName, SimConnectHandle& session, std::uint32_t& eventId,
                      std::string& error);
};
