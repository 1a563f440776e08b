#include "sim/simconnect_client.h"

#include "logging/logger.h"
#include "sim/hresult_text.h"
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

SimConnectClient::SimConnectClient(SimConnectLibrary simLibrary, Host hostRecord)
    : library(std::move(simLibrary)), host(std::move(hostRecord)) {}

SimConnectClient::~SimConnectClient() {
    stop();
}

bool SimConnectClient::start(const std::string& name, ConnectionCallback onConnection, DeviceReadyCallback deviceReady,
                             std::string& error) {
    if (running) {
        error = "SimConnect client already running";
        return false;
    }
    clientName = name.empty() ? defaultClientName : name;
    connectionCallback = std::move(onConnection);
    deviceReadyCallback = std::move(deviceReady);
    running = true;
    try {
        worker = host.startThread([this] { workerLoop(); });
    } catch (const std::exception& failure) {
        running = false;
        error = std::string("Failed to start SimConnect worker: ") + failure.what();
        return false;
    }
    return true;
}

void SimConnectClient::stop() {
    if (!running.exchange(false))
        return;
    worker.join();
    disconnect("shutdown");
}

void SimConnectClient::workerLoop() {
    WorkerState state;
    state.backoffMs = firstBackoffMs;
    while (running) {
        try {
            workerStep(state);
        } catch (const std::exception& failure) {
            logError(std::string("SimConnect worker exception: ") + failure.what());
            disconnectAfterException();
            sleepBackoff(state);
        }
    }
}

void SimConnectClient::disconnectAfterException() {
    try {
        disconnect("worker exception");
    } catch (const std::exception& failure) {
        // A callback's; the session is over all the same, and the worker goes on.
        logError(std::string("SimConnect worker exception: ") + failure.what());
    }
}

void SimConnectClient::workerStep(WorkerState& state) {
    if (connected) {
        pollSession();
        return;
    }
    const bool simRunning = host.findProcess(isSimulatorProcess);
    if (everConnected && !simRunning)
        requestShutdown();
    if (!deviceAttached(state))
        return;
    if (simRunning)
        tryOpen(state);
    else
        waitForSimulator(state);
}

void SimConnectClient::pollSession() {
    if (const SimConnectHandle session = currentHandle()) {
        const SimConnectResult result = library.callDispatch(session, dispatch, this);
        if (simConnectFailed(result))
            disconnect("dispatch error " + hresultText(result));
    }
    host.sleepFor(dispatchPoll);
}

bool SimConnectClient::deviceAttached(WorkerState& state) {
    if (deviceReadyCallback && !deviceReadyCallback()) {
        if (!state.waitingForDevice) {
            logInfo("Waiting for HID device to connect");
            state.waitingForDevice = true;
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
    if (openSession(error)) {
        state.backoffMs = firstBackoffMs;
        return;
    }
    if (!error.empty())
        logWarn("Waiting for SimConnect connection: " + error);
    sleepBackoff(state);
}

void SimConnectClient::sleepBackoff(WorkerState& state) {
    host.sleepFor(std::chrono::milliseconds(state.backoffMs));
    state.backoffMs = std::min(2 * state.backoffMs, backoffLimitMs);
}

void SimConnectClient::requestShutdown() {
    if (shutdownRequested.exchange(true))
        return;
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
