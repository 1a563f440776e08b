#pragma once

#include "platform/platform.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <unordered_map>

using ConnectionCallback = std::function<void(bool connected)>;
using BatteryCallback = std::function<void(bool on)>;
/// `data` is the block after the message's header, valid during the call; `size` is never 0.
using ClientDataCallback = std::function<void(std::uint32_t requestId, const std::uint8_t* data, std::uint32_t size)>;
using QuitCallback = std::function<void()>;

/// The session with the simulator: opens it, passes its messages on, makes calls on it, and closes it; then the next
/// one can be opened. One thread at a time may call `open`, `poll` and `close`; any thread may call the rest. Callbacks
/// run on the thread of those three, with no lock held.
class SimClientSession {
public:
    explicit SimClientSession(SimConnectLibrary library);
    SimClientSession(const SimClientSession&) = delete;
    SimClientSession& operator=(const SimClientSession&) = delete;

    /// Which of the aircraft's batteries is watched, counted from 1. To be set before the first `open`, like the
    /// connection callback.
    void setBatteryIndex(int index);
    void setConnectionCallback(ConnectionCallback callback);
    void setBatteryCallback(BatteryCallback callback);
    void setQuitCallback(QuitCallback callback);
    void setClientDataCallback(ClientDataCallback callback);

    /// False with `error` set when the simulator refuses. True also when a session is open already, which stays. A
    /// battery that can't be watched is logged, and the session goes on without it.
    bool open(const std::string& clientName, std::string& error);

    /// Passes on the messages that have arrived. A failure ends the session.
    void poll();

    /// Ends the session; without one it does nothing. `reason` is for the log.
    void close(const std::string& reason);

    /// Calls the quit callback, the first time only: the simulator has ended, and the program must end too.
    void requestShutdown();

    bool isConnected() const { return connected; }
    /// A session has been open at some point.
    bool wasEverConnected() const { return everConnected; }

    /// The session's handle, or null. It may be closed by another thread at any moment; a call on it then fails.
    SimConnectHandle connectedHandle();

    // The operations. False with `error` set without a session or when the call fails.

    /// Fires a named event on the user's aircraft, with data 0.
    bool transmitEvent(const std::string& eventName, std::string& error);
    bool mapClientDataName(const std::string& name, std::uint32_t clientDataId, std::string& error);
    bool addClientDataDefinition(std::uint32_t definitionId, std::uint32_t size, std::string& error);
    bool requestClientData(std::uint32_t clientDataId, std::uint32_t requestId, std::uint32_t definitionId,
                           std::string& error);

private:
    const SimConnectLibrary library;

    std::atomic<bool> connected{false};
    // Neither is ever cleared.
    std::atomic<bool> everConnected{false};
    std::atomic<bool> shutdownRequested{false};

    // Set before the first `open`.
    int batteryIndex = 2;
    ConnectionCallback connectionCallback;

    /// `library.notice` is in the log already. Only `open` uses this.
    bool noticeLogged = false;

    // Guards everything below. Held for short stretches, never across a callback, and across two library calls only:
    // mapping an event's name, so that two threads can't map it twice, and closing a surplus handle.
    std::mutex mutex;
    SimConnectHandle handle = nullptr;
    BatteryCallback batteryCallback;
    ClientDataCallback clientDataCallback;
    QuitCallback quitCallback;
    /// The ids of the events' names in this session.
    std::unordered_map<std::string, std::uint32_t> eventIds;
    std::uint32_t nextEventId = 1;

    // Opening, messages and end (sim_client_session.cpp).
    void logNoticeOnce();
    bool adoptHandle(SimConnectHandle newHandle);
    void watchBattery();
    bool defineBattery(std::string& error);
    bool requestBattery(std::string& error);
    SimConnectHandle batteryHandle(std::string& error);
    SimConnectHandle currentHandle();
    static void dispatch(SimConnectRecv* message, std::uint32_t size, void* context);
    void handleMessage(const SimConnectRecv* message, std::uint32_t size);
    void handleBattery(const SimConnectRecv* message, std::uint32_t size);
    void handleClientData(const SimConnectRecv* message, std::uint32_t size);

    // The operations (sim_client_session_operations.cpp).
    SimConnectHandle usableHandle(std::string& error);
    bool resolveEvent(const std::string& eventName, SimConnectHandle& session, std::uint32_t& eventId,
                      std::string& error);
};
