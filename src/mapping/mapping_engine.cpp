#include "mapping/mapping_engine.h"

#include <utility>

MappingEngine::MappingEngine(Host host)
    : host(std::move(host)),
      outputs(this->host, context, simConnected),
      holds(this->host, context),
      events(this->host, context, holds, outputs) {}

MappingEngine::~MappingEngine() {
    stop();
}

bool MappingEngine::start(const AppConfig* config, HidManager* hid, SimConnectClient* simConnect,
                          MobiFlightClient* mobiflight, const ButtonConfig* buttons, const HidEventMap* eventMap,
                          SharedSimState* simState, std::string& error) {
    if (events.running()) {
        error = "Mapping engine already running";
        return false;
    }
    context = {config, hid, simConnect, mobiflight, buttons, eventMap, simState};
    std::string reason;
    if (events.start(reason) && holds.start(reason) && outputs.start(reason)) {
        return true;
    }
    events.requestStop();
    joinWorkers();
    error = "Failed to start mapping workers: " + reason;
    return false;
}

void MappingEngine::stop() {
    // The event worker runs exactly as long as the engine does.
    if (!events.requestStop()) {
        return;
    }
    joinWorkers();
    holds.clear();
}

void MappingEngine::joinWorkers() {
    holds.requestStop();
    outputs.requestStop();
    events.join();
    holds.join();
    outputs.join();
}

void MappingEngine::submitEvent(const HidProtocol::HidEvent& event, const std::string& deviceName, int index) {
    events.submit(event, deviceName, index);
}

void MappingEngine::requestOutputUpdate() {
    outputs.requestUpdate();
}

void MappingEngine::onBacklightPayload(const std::string& text) {
    outputs.onBacklightPayload(text);
}
