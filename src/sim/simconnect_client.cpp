#include "sim/simconnect_client.h"

#include "logging/logger.h"
#include "text/ascii.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <string_view>
#include <utility>

namespace {

constexpr const char* defaultClientName = "VantrelBridgeHID";

// The only delay that a message of an open session meets.
constexpr std::chrono::milliseconds dispatchPoll{15};
constexpr std::chrono::milliseconds deviceWait{1000};
constexpr std::chrono::milliseconds processWait{5000};
// A simulator that is starting refuses clients for a minute or two, and each refusal costs it some work.
constexpr std::int32_t firstBackoffMs = 5000;
constexpr std::int32_t backoffLimitMs = 30000;

// Both generations of the simulator.
constexpr std::array<std::string_view, 2> simulatorProcesses{"FlightSimulator.exe", "FlightSimulator2024.exe"};

bool isSimulatorProcess(std::string_view name) {
    return std::any_of(simulatorProcesses.begin(), simulatorProcesses.end(),
                       [name](std::string_view known) { return equalsIgnoringCase(name, known); });
}

} // namespace

SimConnectClient::SimConnectClient(SimConnectLibrary library, Host host)
    : host(std::move(host)), session(std::move(library)) {}

SimConnectClient::~SimConnectClient() {
    stop();
}

bool SimConnectClient::start(const std::string& name, ConnectionCallback onConnection, DeviceReadyCallback deviceReady,
                             std::string& error) {
    if (worker.running()) {
        error = "SimConnect client already running";
        return false;
    }
    clientName = name.empty() ? defaultClientName : name;
    session.setConnectionCallback(std::move(onConnection));
    deviceReadyCallback = std::move(deviceReady);
    return worker.start(
        host, [this] { workerLoop(); }, "Failed to start SimConnect worker: ", error);
}

void SimConnectClient::stop() {
    if (!worker.requestStop()) {
        return;
    }
    worker.join();
    session.close("shutdown");
}

void SimConnectClient::workerLoop() {
    WorkerState state;
    state.backoffMs = firstBackoffMs;
    while (worker.running()) {
        try {
            workerStep(state);
        } catch (const std::exception& failure) {
            logError(std::string("SimConnect worker exception: ") + failure.what());
            closeAfterException();
            sleepBackoff(state);
        }
    }
}

void SimConnectClient::closeAfterException() {
    try {
        session.close("worker exception");
    } catch (const std::exception& failure) {
        // Thrown by a callback. The session is over all the same, and the worker goes on.
        logError(std::string("SimConnect worker exception: ") + failure.what());
    }
}

void SimConnectClient::workerStep(WorkerState& state) {
    if (session.isConnected()) {
        session.poll();
        host.sleepFor(dispatchPoll);
        return;
    }
    // Scanned even without a board, and only without a session: the end of an open one shows in its messages.
    const bool simRunning = host.findProcess(isSimulatorProcess);
    // The loop goes on: it is the application that ends, and that stops this worker.
    if (session.wasEverConnected() && !simRunning) {
        session.requestShutdown();
    }
    if (!deviceAttached(state)) {
        return;
    }
    if (simRunning) {
        tryOpen(state);
    } else {
        waitForSimulator(state);
    }
}

bool SimConnectClient::deviceAttached(WorkerState& state) {
    if (deviceReadyCallback && !deviceReadyCallback()) {
        if (!state.waitingForDevice) {
            logInfo("Waiting for HID device to connect");
            state.waitingForDevice = true;
            // So that the wait for the simulator is logged again when it follows the one for the board.
            state.waitingForSim = false;
        }
        host.sleepFor(deviceWait);
        return false;
    }
    if (state.waitingForDevice) {
        logInfo("HID device detected");
        state.waitingForDevice = false;
    }
    return true;
}

void SimConnectClient::waitForSimulator(WorkerState& state) {
    if (!state.waitingForSim) {
        logInfo("Waiting for flight simulator process to start");
        state.waitingForSim = true;
    }
    host.sleepFor(processWait);
}

void SimConnectClient::tryOpen(WorkerState& state) {
    if (state.waitingForSim) {
        logInfo("Flight simulator process detected");
        state.waitingForSim = false;
    }
    std::string error;
    if (session.open(clientName, error)) {
        state.backoffMs = firstBackoffMs;
        return;
    }
    if (!error.empty()) {
        logWarn("Waiting for SimConnect connection: " + error);
    }
    sleepBackoff(state);
}

void SimConnectClient::sleepBackoff(WorkerState& state) {
    host.sleepFor(std::chrono::milliseconds(state.backoffMs));
    state.backoffMs = std::min(2 * state.backoffMs, backoffLimitMs);
}

// What other subsystems set on the session and request from it.

void SimConnectClient::setBatteryIndex(int index) {
    session.setBatteryIndex(index);
}

void SimConnectClient::setBatteryCallback(BatteryCallback callback) {
    session.setBatteryCallback(std::move(callback));
}

void SimConnectClient::setQuitCallback(QuitCallback callback) {
    session.setQuitCallback(std::move(callback));
}

void SimConnectClient::setClientDataCallback(ClientDataCallback callback) {
    session.setClientDataCallback(std::move(callback));
}

bool SimConnectClient::isConnected() const {
    return session.isConnected();
}

SimConnectHandle SimConnectClient::connectedHandle() {
    return session.connectedHandle();
}

bool SimConnectClient::transmitEvent(const std::string& eventName, std::uint32_t /*data*/, std::string& error) {
    return session.transmitEvent(eventName, error);
}

bool SimConnectClient::mapClientDataName(const std::string& name, std::uint32_t clientDataId, std::string& error) {
    return session.mapClientDataName(name, clientDataId, error);
}

bool SimConnectClient::addClientDataDefinition(std::uint32_t definitionId, std::uint32_t /*offset*/, std::uint32_t size,
                                               std::string& error) {
    return session.addClientDataDefinition(definitionId, size, error);
}

bool SimConnectClient::requestClientData(std::uint32_t clientDataId, std::uint32_t requestId,
                                         std::uint32_t definitionId, std::string& error) {
    return session.requestClientData(clientDataId, requestId, definitionId, error);
}
