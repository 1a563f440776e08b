#include "mobiflight/mobiflight_client.h"

#include "logging/logger.h"

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

void MobiFlightClient::setExtensions(const ExtensionsConfig& newExtensions) {
    extensions = newExtensions;
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
        ++sessionNumber;
        clearQueue();
    }
    queueCondition.notify_all();
    if (nowConnected)
        beginSession();
    else
        logInfo("MobiFlight client waiting for SimConnect");
}

void MobiFlightClient::clearQueue() {
    commandQueue.clear();
    pendingHolds.clear();
    inFlightHolds.clear();
    encoderPending.clear();
    renewal.stop();
    inFlightIsStale = true;
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
        onLVars(data, size);
}

void MobiFlightClient::onLVars(const std::uint8_t* data, std::uint32_t size) {
    // The module writes numbers only. Their bytes can look like a text, though: 0.7 begins with "333?".
    std::string text = extensions.lvarNumbers ? std::string() : blockText(data, size);
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
