#include "sim/sim_client_session.h"

#include "logging/logger.h"
#include "sim/hresult_text.h"

#include <cstring>
#include <utility>

namespace {

constexpr std::uint32_t batteryDefinitionId = 1;
constexpr std::uint32_t batteryRequestId = 1;
constexpr const char* batteryVariable = "ELECTRICAL MASTER BATTERY:";

constexpr std::uint32_t dataHeaderSize = sizeof(SimConnectRecvData);

/// The block after a data message's header.
const std::uint8_t* dataBlock(const SimConnectRecv* message) {
    return reinterpret_cast<const std::uint8_t*>(message) + dataHeaderSize;
}

std::uint32_t requestIdOf(const SimConnectRecv* message) {
    return reinterpret_cast<const SimConnectRecvData*>(message)->dwRequestID;
}

} // namespace

SimClientSession::SimClientSession(SimConnectLibrary library) : library(std::move(library)) {}

void SimClientSession::setBatteryIndex(int index) {
    batteryIndex = index;
}

void SimClientSession::setConnectionCallback(ConnectionCallback callback) {
    connectionCallback = std::move(callback);
}

// A replaced callback is destroyed with the argument, after the lock is released: its captures may call into this
// object.

void SimClientSession::setBatteryCallback(BatteryCallback callback) {
    const std::lock_guard lock(mutex);
    batteryCallback.swap(callback);
}

void SimClientSession::setQuitCallback(QuitCallback callback) {
    const std::lock_guard lock(mutex);
    quitCallback.swap(callback);
}

void SimClientSession::setClientDataCallback(ClientDataCallback callback) {
    const std::lock_guard lock(mutex);
    clientDataCallback.swap(callback);
}

bool SimClientSession::open(const std::string& clientName, std::string& error) {
    logNoticeOnce();
    SimConnectHandle newHandle = nullptr;
    const SimConnectResult result = library.open(&newHandle, clientName.c_str(), nullptr, 0, nullptr, 0);
    if (simConnectFailed(result)) {
        error = simConnectError("SimConnect_Open", result);
        return false;
    }
    if (!adoptHandle(newHandle)) {
        return true;
    }
    // Before `connected` is set: no other thread may use a session that is still being set up.
    watchBattery();
    const bool wasConnected = connected.exchange(true);
    everConnected = true;
    if (!wasConnected && connectionCallback) {
        connectionCallback(true);
    }
    logInfo("SimConnect connected");
    return true;
}

void SimClientSession::logNoticeOnce() {
    if (std::exchange(noticeLogged, true) || !library.notice) {
        return;
    }
    const std::string notice = library.notice();
    if (!notice.empty()) {
        logWarn(notice);
    }
}

bool SimClientSession::adoptHandle(SimConnectHandle newHandle) {
    const std::lock_guard lock(mutex);
    if (handle != nullptr) {
        library.close(newHandle);
        return false;
    }
    handle = newHandle;
    eventIds.clear();
    nextEventId = 1;
    return true;
}

// Without the battery the boards stay usable, so a failure is only logged.
void SimClientSession::watchBattery() {
    std::string error;
    if (!defineBattery(error)) {
        logWarn("SimConnect data definitions failed: " + error);
        return;
    }
    if (!requestBattery(error)) {
        logWarn("SimConnect data request failed: " + error);
    }
}

bool SimClientSession::defineBattery(std::string& error) {
    const SimConnectHandle session = batteryHandle(error);
    if (session == nullptr) {
        return false;
    }
    const std::string variable = batteryVariable + std::to_string(batteryIndex);
    const SimConnectResult result = library.addToDataDefinition(session, batteryDefinitionId, variable.c_str(), "Bool",
                                                                simConnectDataTypeInt32, 0.0F, simConnectUnused);
    return callSucceeded("SimConnect_AddToDataDefinition", result, error);
}

bool SimClientSession::requestBattery(std::string& error) {
    const SimConnectHandle session = batteryHandle(error);
    if (session == nullptr) {
        return false;
    }
    const SimConnectResult result =
        library.requestDataOnSimObject(session, batteryRequestId, batteryDefinitionId, simConnectObjectIdUser,
                                       simConnectPeriodSimFrame, simConnectRequestFlagChanged, 0, 0, 0);
    return callSucceeded("SimConnect_RequestDataOnSimObject", result, error);
}

SimConnectHandle SimClientSession::batteryHandle(std::string& error) {
    const SimConnectHandle session = currentHandle();
    if (session == nullptr) {
        error = "SimConnect handle unavailable";
    }
    return session;
}

SimConnectHandle SimClientSession::currentHandle() {
    const std::lock_guard lock(mutex);
    return handle;
}

void SimClientSession::poll() {
    const SimConnectHandle session = currentHandle();
    if (session == nullptr) {
        return;
    }
    const SimConnectResult result = library.callDispatch(session, dispatch, this);
    if (simConnectFailed(result)) {
        close("dispatch error " + hresultText(result));
    }
}

void SimClientSession::close(const std::string& reason) {
    SimConnectHandle oldHandle = nullptr;
    {
        const std::lock_guard lock(mutex);
        if (handle == nullptr) {
            connected = false;
            return;
        }
        oldHandle = std::exchange(handle, nullptr);
        eventIds.clear();
        nextEventId = 1;
    }
    // The handle is out of reach before it is closed. A call that copied it earlier may still use it and then fails
    // like any other.
    library.close(oldHandle);
    if (!connected.exchange(false)) {
        return;
    }
    logWarn("SimConnect disconnected: " + reason);
    if (connectionCallback) {
        connectionCallback(false);
    }
}

void SimClientSession::dispatch(SimConnectRecv* message, std::uint32_t size, void* context) {
    // Even the header may be missing: the network client passes on what it received.
    if (message == nullptr || context == nullptr || size < sizeof(SimConnectRecv)) {
        return;
    }
    static_cast<SimClientSession*>(context)->handleMessage(message, size);
}

void SimClientSession::handleMessage(const SimConnectRecv* message, std::uint32_t size) {
    switch (message->dwID) {
    case simConnectRecvOpen:
        logInfo("SimConnect session opened");
        break;
    case simConnectRecvQuit:
        close("SimConnect quit");
        requestShutdown();
        break;
    case simConnectRecvSimobjectData:
        handleBattery(message, size);
        break;
    case simConnectRecvClientData:
        handleClientData(message, size);
        break;
    default:
        // The simulator's exceptions too: they arrive after the call that caused them and don't name it.
        break;
    }
}

void SimClientSession::handleBattery(const SimConnectRecv* message, std::uint32_t size) {
    std::uint32_t value = 0;
    if (size < dataHeaderSize + sizeof value || requestIdOf(message) != batteryRequestId) {
        return;
    }
    std::memcpy(&value, dataBlock(message), sizeof value);
    BatteryCallback callback;
    {
        const std::lock_guard lock(mutex);
        callback = batteryCallback;
    }
    if (callback) {
        callback(value != 0);
    }
}

void SimClientSession::handleClientData(const SimConnectRecv* message, std::uint32_t size) {
    if (size <= dataHeaderSize) {
        return;
    }
    ClientDataCallback callback;
    {
        const std::lock_guard lock(mutex);
        callback = clientDataCallback;
    }
    if (callback) {
        callback(requestIdOf(message), dataBlock(message), size - dataHeaderSize);
    }
}

void SimClientSession::requestShutdown() {
    // Marked even without a callback: one that is set later has missed the simulator's end.
    if (shutdownRequested.exchange(true)) {
        return;
    }
    QuitCallback callback;
    {
        const std::lock_guard lock(mutex);
        callback = quitCallback;
    }
    if (callback) {
        logInfo("Simulator closed; requesting application shutdown");
        callback();
    }
}
