// The session itself: how it is opened, what its messages do, how it ends.

#include "logging/logger.h"
#include "sim/hresult_text.h"
#include "sim/simconnect_client.h"

#include <cstring>
#include <utility>

namespace {

constexpr std::uint32_t batteryDefinitionId = 1;
constexpr std::uint32_t batteryRequestId = 1;
constexpr const char* batteryVariable = "ELECTRICAL MASTER BATTERY:";

constexpr std::uint32_t dataHeaderSize = sizeof(SimConnectRecvData);

/// The block behind a data message's header.
const std::uint8_t* dataBlock(const SimConnectRecv* message) {
    return reinterpret_cast<const std::uint8_t*>(message) + dataHeaderSize;
}

std::uint32_t requestIdOf(const SimConnectRecv* message) {
    return reinterpret_cast<const SimConnectRecvData*>(message)->dwRequestID;
}

} // namespace

bool SimConnectClient::openSession(std::string& error) {
    logNoticeOnce();
    SimConnectHandle newHandle = nullptr;
    const SimConnectResult result = library.open(&newHandle, clientName.c_str(), nullptr, 0, nullptr, 0);
    if (simConnectFailed(result)) {
        error = simConnectError("SimConnect_Open", result);
        return false;
    }
    if (!adoptHandle(newHandle))
        return true;
    watchBattery();
    const bool wasConnected = connected.exchange(true);
    everConnected = true;
    if (!wasConnected && connectionCallback)
        connectionCallback(true);
    logInfo("SimConnect connected");
    return true;
}

void SimConnectClient::logNoticeOnce() {
    if (std::exchange(noticeLogged, true) || !library.notice)
        return;
    const std::string notice = library.notice();
    if (!notice.empty())
        logWarn(notice);
}

bool SimConnectClient::adoptHandle(SimConnectHandle newHandle) {
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

void SimConnectClient::watchBattery() {
    std::string error;
    if (!defineBattery(error)) {
        logWarn("SimConnect data definitions failed: " + error);
        return;
    }
    if (!requestBattery(error))
        logWarn("SimConnect data request failed: " + error);
}

bool SimConnectClient::defineBattery(std::string& error) {
    const SimConnectHandle session = batteryHandle(error);
    if (session == nullptr)
        return false;
    const std::string variable = batteryVariable + std::to_string(batteryIndex);
    const SimConnectResult result = library.addToDataDefinition(session, batteryDefinitionId, variable.c_str(), "Bool",
                                                                simConnectDataTypeInt32, 0.0F, simConnectUnused);
    return callSucceeded("SimConnect_AddToDataDefinition", result, error);
}

bool SimConnectClient::requestBattery(std::string& error) {
    const SimConnectHandle session = batteryHandle(error);
    if (session == nullptr)
        return false;
    const SimConnectResult result =
        library.requestDataOnSimObject(session, batteryRequestId, batteryDefinitionId, simConnectObjectIdUser,
                                       simConnectPeriodSimFrame, simConnectRequestFlagChanged, 0, 0, 0);
    return callSucceeded("SimConnect_RequestDataOnSimObject", result, error);
}

SimConnectHandle SimConnectClient::batteryHandle(std::string& error) {
    const SimConnectHandle session = currentHandle();
    if (session == nullptr)
        error = "SimConnect handle unavailable";
    return session;
}

SimConnectHandle SimConnectClient::currentHandle() {
    const std::lock_guard lock(mutex);
    return handle;
}

void SimConnectClient::disconnect(const std::string& reason) {
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
    library.close(oldHandle);
    if (!connected.exchange(false))
        return;
    logWarn("SimConnect disconnected: " + reason);
    if (connectionCallback)
        connectionCallback(false);
}

void SimConnectClient::dispatch(SimConnectRecv* message, std::uint32_t size, void* context) {
    // The head is read only when it is there: what the library hands over may have come over a network.
    if (message == nullptr || context == nullptr || size < sizeof(SimConnectRecv))
        return;
    static_cast<SimConnectClient*>(context)->handleMessage(message, size);
}

void SimConnectClient::handleMessage(const SimConnectRecv* message, std::uint32_t size) {
    switch (message->dwID) {
    case simConnectRecvOpen:
        logInfo("SimConnect session opened");
        break;
    case simConnectRecvQuit:
        disconnect("SimConnect quit");
        requestShutdown();
        break;
    case simConnectRecvSimobjectData:
        handleBattery(message, size);
        break;
    case simConnectRecvClientData:
        handleClientData(message, size);
        break;
    default:
        break;
    }
}

void SimConnectClient::handleBattery(const SimConnectRecv* message, std::uint32_t size) {
    std::uint32_t value = 0;
    if (size < dataHeaderSize + sizeof value || requestIdOf(message) != batteryRequestId)
        return;
    std::memcpy(&value, dataBlock(message), sizeof value);
    BatteryCallback callback;
    {
        const std::lock_guard lock(mutex);
        callback = batteryCallback;
    }
    if (callback)
        callback(value != 0);
}

void SimConnectClient::handleClientData(const SimConnectRecv* message, std::uint32_t size) {
    if (size <= dataHeaderSize)
        return;
    ClientDataCallback callback;
    {
        const std::lock_guard lock(mutex);
        callback = clientDataCallback;
    }
    if (callback)
        callback(requestIdOf(message), dataBlock(message), size - dataHeaderSize);
}
