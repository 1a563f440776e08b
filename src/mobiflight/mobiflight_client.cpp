#include "mobiflight/mobiflight_client.h"

#include "logging/logger.h"
#include "mobiflight/command_area.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>

namespace {

constexpr std::uint32_t responseAreaId = 0x1001;
constexpr std::uint32_t lvarsAreaId = 0x1002;
constexpr std::uint32_t responseDefinitionId = 0x1101;
constexpr std::uint32_t lvarsDefinitionId = 0x1102;
constexpr std::uint32_t responseRequestId = 0x1200;
constexpr std::uint32_t lvarsRequestId = 0x1201;
// Sizes in bytes, as the module creates the areas.
constexpr std::uint32_t responseAreaSize = 256;
constexpr std::uint32_t lvarsAreaSize = 4096;

constexpr const char* clearVariables = "MF.SimVars.Clear";
constexpr const char* subscribeLight = "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)";

std::string registrationText(const std::string& clientName) {
    return "MF.Clients.Add." + clientName;
}

/// The block's bytes up to the first zero, if there is one.
std::string blockText(const std::uint8_t* data, std::uint32_t size) {
    if (data == nullptr)
        return {};
    return {data, std::find(data, data + size, std::uint8_t{0})};
}

/// The single that the block begins with, as text; none when the block is too short or the number isn't finite.
std::optional<std::string> numberText(const std::uint8_t* data, std::uint32_t size) {
    if (data == nullptr || size < sizeof(float))
        return std::nullopt;
    const std::uint32_t bits =
        data[0] | std::uint32_t{data[1]} << 8 | std::uint32_t{data[2]} << 16 | std::uint32_t{data[3]} << 24;
    const auto value = std::bit_cast<float>(bits);
    if (!std::isfinite(value))
        return std::nullopt;
    // The largest single has 39 digits before the point.
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%f", static_cast<double>(value));
    return text.data();
}

} // namespace

MobiFlightClient::MobiFlightClient(SimConnectLibrary simLibrary, Host hostRecord)
    : library(std::move(simLibrary)), host(std::move(hostRecord)) {}

MobiFlightClient::~MobiFlightClient() {
    stop();
}

void MobiFlightClient::setLVarHandler(LVarHandler handler) {
    const std::lock_guard lock(handlerMutex);
    lvarHandler.swap(handler);
}

bool MobiFlightClient::start(SimConnectClient* client, const MobiFlightConfig& config, std::string& error) {
    configure(client, config);
    if (!enabled)
        return true;
    if (running) {
        error = "MobiFlight client already running";
        return false;
    }
    if (simConnect != nullptr)
        simConnect->setClientDataCallback([this](std::uint32_t requestId, const std::uint8_t* data,
                                                 std::uint32_t size) { onClientData(requestId, data, size); });
    running = true;
    try {
        worker = host.startThread([this] { workerLoop(); });
    } catch (const std::exception& failure) {
        running = false;
        error = std::string("Failed to start MobiFlight worker: ") + failure.what();
        return false;
    }
    return true;
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
    if (!running.exchange(false))
        return;
    {
        // Waits out a worker that has found `running` set and is not waiting yet: it would miss the broadcast.
        const std::lock_guard lock(queueMutex);
    }
    queueCondition.notify_all();
    worker.join();
    ready = false;
    simConnected = false;
    {
        const std::lock_guard lock(queueMutex);
        clearQueue();
    }
    setLVarHandler(nullptr);
    if (simConnect != nullptr)
        simConnect->setClientDataCallback(nullptr);
}

void MobiFlightClient::onSimConnectState(bool nowConnected) {
    if (!enabled || !running)
        return;
    simConnected = nowConnected;
    ready = false;
    {
        const std::lock_guard lock(queueMutex);
        clearQueue();
    }
    queueCondition.notify_all();
    if (!nowConnected) {
        logInfo("MobiFlight client waiting for SimConnect");
        return;
    }
    std::string error;
    if (!attachChannels(error)) {
        logWarn("MobiFlight channel initialization failed: " + error);
        return;
    }
    queueHandshake(registrationText(clientName));
}

bool MobiFlightClient::attachChannels(std::string& error) {
    if (simConnect == nullptr) {
        error = noSimConnectClient;
        return false;
    }
    return simConnect->mapClientDataName(commandChannel, commandAreaId, error) &&
           simConnect->mapClientDataName(responseChannel, responseAreaId, error) &&
           simConnect->mapClientDataName(lvarsChannel, lvarsAreaId, error) &&
           simConnect->addClientDataDefinition(commandDefinitionId, 0, commandAreaSize, error) &&
           simConnect->addClientDataDefinition(responseDefinitionId, 0, responseAreaSize, error) &&
           simConnect->addClientDataDefinition(lvarsDefinitionId, 0, lvarsAreaSize, error) &&
           simConnect->requestClientData(responseAreaId, responseRequestId, responseDefinitionId, error) &&
           simConnect->requestClientData(lvarsAreaId, lvarsRequestId, lvarsDefinitionId, error);
}

void MobiFlightClient::queueHandshake(const std::string& text) {
    const std::lock_guard lock(queueMutex);
    commandQueue.push_back({.text = text, .queuedAt = host.now()});
    queueCondition.notify_one();
}

void MobiFlightClient::clearQueue() {
    commandQueue.clear();
    pendingHolds.clear();
    inFlightHolds.clear();
    encoderPending.clear();
    handIsStale = true;
}

bool MobiFlightClient::isReady() const {
    return ready;
}

void MobiFlightClient::onClientData(std::uint32_t requestId, const std::uint8_t* data, std::uint32_t size) {
    if (!enabled)
        return;
    if (requestId == responseRequestId)
        onResponse(blockText(data, size));
    else if (requestId == lvarsRequestId)
        onLVars(blockText(data, size), data, size);
}

void MobiFlightClient::onResponse(const std::string& text) {
    const std::string registration = registrationText(clientName);
    if (text.find(registration + ".Finished") != std::string::npos) {
        if (ready.exchange(true))
            return;
        logInfo("MobiFlight client registered");
        queueHandshake(clearVariables);
        queueHandshake(subscribeLight);
    } else if (text.find(registration + ".Error") != std::string::npos) {
        logWarn("MobiFlight registration error: " + text);
    }
}

void MobiFlightClient::onLVars(std::string text, const std::uint8_t* data, std::uint32_t size) {
    if (text.empty()) {
        std::optional<std::string> number = numberText(data, size);
        if (!number)
            return;
        text = std::move(*number);
    }
    LVarHandler handler;
    {
        const std::lock_guard lock(handlerMutex);
        handler = lvarHandler;
    }
    if (handler)
        handler(text);
    if (Logger::instance().debugEnabledNow())
        Logger::instance().debug("MobiFlight LVars: " + text);
}
