#include "mobiflight/mobiflight_client.h"

#include "logging/logger.h"
#include "mobiflight/client_data_text.h"

#include <optional>
#include <utility>

MobiFlightClient::MobiFlightClient(SimConnectLibrary library, Host host)
    : library(std::move(library)), host(std::move(host)) {}

MobiFlightClient::~MobiFlightClient() {
    stop();
}

void MobiFlightClient::setLVarHandler(LVarHandler handler) {
    const std::lock_guard lock(handlerMutex);
    lvarHandler.swap(handler);
}

void MobiFlightClient::setExtensions(const ExtensionsConfig& config) {
    extensions = config;
}

bool MobiFlightClient::start(SimConnectClient* client, const MobiFlightConfig& config, std::string& error) {
    // Before the refusals below: a start that fails still gives a running client the new settings, or disables it.
    configure(client, config);
    if (!enabled) {
        return true;
    }
    if (worker.running()) {
        error = "MobiFlight client already running";
        return false;
    }
    if (simConnect != nullptr) {
        simConnect->setClientDataCallback([this](std::uint32_t requestId, const std::uint8_t* data,
                                                 std::uint32_t size) { onClientData(requestId, data, size); });
    }
    return worker.start(
        host, [this] { workerLoop(); }, "Failed to start MobiFlight worker: ", error);
}

void MobiFlightClient::configure(SimConnectClient* client, const MobiFlightConfig& config) {
    simConnect = client;
    enabled = config.enabled;
    clientName = config.clientName;
    commandChannel = config.commandChannel;
    responseChannel = config.responseChannel;
    lvarsChannel = config.lvarsChannel;
    rpnRateLimitMs = config.rpnRateLimitMs;
    mapHoldRepeatMs = config.mapHoldRepeatMs;
}

void MobiFlightClient::stop() {
    if (!worker.requestStop()) {
        return;
    }
    {
        // A worker that has seen itself running but doesn't wait yet would miss the broadcast. It holds this mutex
        // until it waits.
        const std::lock_guard lock(queueMutex);
    }
    queueCondition.notify_all();
    worker.join();
    ready = false;
    simConnected = false;
    {
        const std::lock_guard lock(queueMutex);
        forgetSession();
    }
    setLVarHandler(nullptr);
    if (simConnect != nullptr) {
        simConnect->setClientDataCallback(nullptr);
    }
}

void MobiFlightClient::onSimConnectState(bool nowConnected) {
    if (!enabled || !worker.running()) {
        return;
    }
    simConnected = nowConnected;
    ready = false;
    {
        const std::lock_guard lock(queueMutex);
        ++sessionNumber;
        forgetSession();
    }
    queueCondition.notify_all();
    if (nowConnected) {
        beginSession();
    } else {
        logInfo("MobiFlight client waiting for SimConnect");
    }
}

void MobiFlightClient::forgetSession() {
    queue.clear();
    renewal.stop();
}

bool MobiFlightClient::isReady() const {
    return ready;
}

void MobiFlightClient::onClientData(std::uint32_t requestId, const std::uint8_t* data, std::uint32_t size) {
    if (!enabled) {
        return;
    }
    if (requestId == responseRequestId) {
        onResponse(blockText(data, size));
    } else if (requestId == lvarsRequestId) {
        onLVars(data, size);
    }
}

void MobiFlightClient::onLVars(const std::uint8_t* data, std::uint32_t size) {
    const std::optional<std::string> text = lvarText(data, size, extensions.lvarNumbers);
    if (!text) {
        return;
    }
    LVarHandler handler;
    {
        const std::lock_guard lock(handlerMutex);
        handler = lvarHandler;
    }
    if (handler) {
        handler(*text);
    }
    if (Logger::instance().debugEnabledNow()) {
        Logger::instance().debug("MobiFlight LVars: " + *text);
    }
}
