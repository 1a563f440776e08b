#include "mapping/mapping_engine.h"

#include <chrono>
#include <exception>
#include <utility>

MappingEngine::MappingEngine(Host newHost) : host(std::move(newHost)) {}

MappingEngine::~MappingEngine() {
    stop();
}

bool MappingEngine::start(const AppConfig* newConfig, HidManager* newHid, SimConnectClient* newSimConnect,
                          MobiFlightClient* newMobiflight, const ButtonConfig* newButtons,
                          const HidEventMap* newEventMap, SharedSimState* newSimState, std::string& error) {
    if (running) {
        error = "Mapping engine already running";
        return false;
    }
    config = newConfig;
    hid = newHid;
    simConnect = newSimConnect;
    mobiflight = newMobiflight;
    buttons = newButtons;
    eventMap = newEventMap;
    simState = newSimState;
    running = true;
    try {
        eventThread = host.startThread([this] { eventWorker(); });
        holdThread = host.startThread([this] { holdWorker(); });
        outputThread = host.startThread([this] { outputWorker(); });
    } catch (const std::exception& failure) {
        running = false;
        wakeWorkers();
        joinWorkers();
        error = std::string("Failed to start mapping workers: ") + failure.what();
        return false;
    }
    return true;
}

void MappingEngine::stop() {
    if (!running.exchange(false)) {
        return;
    }
    wakeWorkers();
    joinWorkers();
    const std::lock_guard lock(holdMutex);
    activeHolds.clear();
}

void MappingEngine::wakeWorkers() {
    // Each under its mutex, so that a worker between its look at `running` and its wait can't miss the wake-up.
    {
        const std::lock_guard lock(queueMutex);
        queueCondition.notify_all();
    }
    {
        const std::lock_guard lock(holdMutex);
        holdCondition.notify_all();
    }
    const std::lock_guard lock(outputMutex);
    outputCondition.notify_all();
}

void MappingEngine::joinWorkers() {
    for (std::thread* worker : {&eventThread, &holdThread, &outputThread}) {
        if (worker->joinable()) {
            worker->join();
        }
    }
}

bool MappingEngine::waitBefore(std::int64_t deadline, std::condition_variable& condition,
                               std::unique_lock<std::mutex>& lock) const {
    const std::int64_t remaining = deadline - host.now();
    if (remaining <= 0) {
        return false;
    }
    condition.wait_for(lock, std::chrono::nanoseconds(remaining));
    return true;
}

void MappingEngine::submitEvent(const HidProtocol::HidEvent& event, const std::string& deviceName, int index) {
    if (!running) {
        return;
    }
    // The name is copied before the lock, to keep the event worker waiting as short as can be.
    QueuedHidEvent entry{event, deviceName, static_cast<std::uint32_t>(index)};
    const std::lock_guard lock(queueMutex);
    if (HidProtocol::classify(event) == HidProtocol::HidEventAction::ButtonRelease) {
        std::erase_if(eventQueue, [&entry](const QueuedHidEvent& queued) {
            return queued.event.controlId == entry.event.controlId && queued.index == entry.index &&
                   HidProtocol::classify(queued.event) == HidProtocol::HidEventAction::Hold &&
                   queued.deviceName == entry.deviceName;
        });
    }
    eventQueue.push_back(std::move(entry));
    queueCondition.notify_one();
}

void MappingEngine::eventWorker() {
    while (running) {
        std::unique_lock lock(queueMutex);
        queueCondition.wait(lock, [this] { return !running || !eventQueue.empty(); });
        if (eventQueue.empty()) {
            continue;
        }
        const QueuedHidEvent next = std::move(eventQueue.front());
        eventQueue.pop_front();
        lock.unlock();
        handleEvent(next.event, next.deviceName, static_cast<int>(next.index));
    }
}

const std::unordered_map<std::uint16_t, std::string>& MappingEngine::apEventTable() {
    static const std::unordered_map<std::uint16_t, std::string> table = {
        {5, "AP_MASTER"},   {6, "TOGGLE_FLIGHT_DIRECTOR"}, {7, "AP_HDG_HOLD"}, {8, "AP_ALT_HOLD"}, {9, "AP_NAV1_HOLD"},
        {11, "AP_BC_HOLD"}, {12, "AP_APR_HOLD"},           {13, "AP_VS_HOLD"}, {16, "AP_FLC"},
    };
    return table;
}
