#pragma once

#include "platform/platform.h"
#include "platform/worker.h"
#include "sim/sim_client_session.h"

#include <cstdint>
#include <functional>
#include <string>

using DeviceReadyCallback = std::function<bool()>;

/// Keeps a session with the simulator: waits for a board and for the simulator's process, opens the session, polls it
/// for messages, and goes back to waiting when it ends. Callbacks run on its worker with no lock held; the last
/// `ConnectionCallback` may run on the thread that calls `stop`. Operations may be called from any thread.
class SimConnectClient {
public:
    SimConnectClient(SimConnectLibrary library, Host host);
    ~SimConnectClient();
    SimConnectClient(const SimConnectClient&) = delete;
    SimConnectClient& operator=(const SimConnectClient&) = delete;

    /// False with `error` set when it already runs or the system refuses a thread.
    bool start(const std::string& name, ConnectionCallback onConnection, DeviceReadyCallback deviceReady,
               std::string& error);

    /// Idempotent. Waits until the worker's sleep ends, up to 30 seconds.
    void stop();

    /// Which of the aircraft's batteries is watched, counted from 1. Before `start` only.
    void setBatteryIndex(int index);
    void setBatteryCallback(BatteryCallback callback);
    void setQuitCallback(QuitCallback callback);
    void setClientDataCallback(ClientDataCallback callback);

    bool isConnected() const;

    /// Fires a named event on the user's aircraft. The simulator always gets data 0.
    bool transmitEvent(const std::string& eventName, std::uint32_t data, std::string& error);

    // The client data operations. False with `error` set without a session or when the call fails.
    bool mapClientDataName(const std::string& name, std::uint32_t clientDataId, std::string& error);
    /// Ignores `offset` and sends 0.
    bool addClientDataDefinition(std::uint32_t definitionId, std::uint32_t offset, std::uint32_t size,
                                 std::string& error);
    bool requestClientData(std::uint32_t clientDataId, std::uint32_t requestId, std::uint32_t definitionId,
                           std::string& error);

    /// The session's handle, or null. It may be closed by another thread at any moment; a call on it then fails.
    SimConnectHandle connectedHandle();

private:
    const Host host;
    SimClientSession session;
    Worker worker;

    // Written by `start` before the worker runs.
    std::string clientName;
    DeviceReadyCallback deviceReadyCallback;

    /// The worker's state between two turns; only the worker uses it.
    struct WorkerState {
        bool waitingForSim = false;
        bool waitingForDevice = false;
        std::int32_t backoffMs = 0;
    };

    void workerLoop();
    void closeAfterException();
    void workerStep(WorkerState& state);
    bool deviceAttached(WorkerState& state);
    void waitForSimulator(WorkerState& state);
    void tryOpen(WorkerState& state);
    void sleepBackoff(WorkerState& state);
};
