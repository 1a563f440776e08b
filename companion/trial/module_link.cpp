#include "companion/trial/module_link.h"

#include "mobiflight/channels.h"
#include "sim/hresult_text.h"
#include "text/module_commands.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr const char* toolName = "VantrelTool";

/// A person waits, so no pause of the clients may last longer.
constexpr std::chrono::milliseconds longestSleep{1000};

std::string addText(const std::string& expression) {
    return std::string(ModuleCommands::addVariable) + expression;
}

/// Differs from one read to the next, also over several runs, and is exact as a 4-byte number.
std::uint32_t markerAt(std::int64_t now) {
    constexpr std::int64_t markers = 1'000'000;
    return 2 * static_cast<std::uint32_t>(now / 1'000'000 % markers) + 1;
}

} // namespace

ModuleLink::ModuleLink(const SimConnectLibrary& library, const Host& host)
    : host(observedHost(host)),
      module(observedLibrary(library), this->host),
      simulator(observedLibrary(library), this->host) {}

ModuleLink::~ModuleLink() {
    stop();
}

Host ModuleLink::observedHost(Host host) {
    host.findProcess = [this, find = host.findProcess](const std::function<bool(std::string_view)>& visit) {
        simulatorRuns = find(visit);
        looked = true;
        return simulatorRuns.load();
    };
    host.sleepFor = [this](std::chrono::milliseconds duration) { sleep(duration); };
    return host;
}

SimConnectLibrary ModuleLink::observedLibrary(SimConnectLibrary library) {
    library.open = [this, open = library.open](auto... arguments) {
        const SimConnectResult result = open(arguments...);
        const std::lock_guard lock(mutex);
        lastResult = result;
        return result;
    };
    library.setClientData = [this, write = library.setClientData](auto... arguments) {
        writtenAt = host.now();
        return write(arguments...);
    };
    return library;
}

void ModuleLink::sleep(std::chrono::milliseconds duration) {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, std::min(duration, longestSleep), [this] { return ending; });
}

bool ModuleLink::start(const MobiFlightConfig& shared, std::string& error) {
    {
        const std::lock_guard lock(mutex);
        ending = false;
    }
    MobiFlightConfig config = shared;
    config.enabled = true;
    config.clientName = toolName;
    ExtensionsConfig extensions;
    extensions.renewRegistration = true;
    extensions.ownChannels = true;
    extensions.lightVariable.clear();
    module.setExtensions(extensions);
    if (!module.start(&simulator, config, error)) {
        return false;
    }
    simulator.setClientDataCallback([this](std::uint32_t requestId, const std::uint8_t* data, std::uint32_t size) {
        onClientData(requestId, data, size);
    });
    return simulator.start(
        toolName, [this](bool connected) { module.onSimConnectState(connected); }, nullptr, error);
}

void ModuleLink::stop() {
    {
        const std::lock_guard lock(mutex);
        ending = true;
        changed.notify_all();
    }
    module.stop();
    simulator.stop();
}

LinkState ModuleLink::state() const {
    if (module.isReady()) {
        return LinkState::Ready;
    }
    if (simulator.isConnected()) {
        return LinkState::ModuleSilent;
    }
    if (looked && !simulatorRuns) {
        return LinkState::NoSimulator;
    }
    const std::lock_guard lock(mutex);
    return simConnectFailed(lastResult) ? LinkState::Refused : LinkState::Starting;
}

std::string ModuleLink::refusal() const {
    const std::lock_guard lock(mutex);
    return simConnectError("SimConnect_Open", lastResult);
}

bool ModuleLink::send(const std::string& rpn, std::string& error) {
    if (module.sendRpnNow(rpn, error)) {
        return true;
    }
    error = error.empty() ? "the simulator refused the command" : error;
    return false;
}

bool ModuleLink::sendText(const std::string& text, std::string& error) {
    if (module.sendTextNow(text, error)) {
        return true;
    }
    error = error.empty() ? "the simulator refused the request" : error;
    return false;
}

/// On the simulator client's worker.
void ModuleLink::onClientData(std::uint32_t requestId, const std::uint8_t* data, std::uint32_t size) {
    module.onClientData(requestId, data, size);
    Values received{};
    if (requestId != lvarsRequestId || size < sizeof received) {
        return;
    }
    std::memcpy(received.data(), data, sizeof received);
    const std::lock_guard lock(mutex);
    values = received;
    changed.notify_all();
}

std::optional<float> ModuleLink::read(const std::string& expression, std::chrono::milliseconds limit,
                                      std::string& error) {
    const std::lock_guard turn(readMutex);
    const std::uint32_t marker = markerAt(host.now());
    if (!request(expression, marker, error)) {
        return std::nullopt;
    }
    const std::optional<float> value = waitForValue(marker, limit);
    std::string ignored;
    // The module would go on evaluating it in each frame.
    sendText(std::string(ModuleCommands::clearVariables), ignored);
    if (!value) {
        error = "the module hasn't delivered the value";
    }
    return value;
}

// The simulator delivers only what changes, so a value that equals what the area holds would never come. The second
// marker always changes, and comes when the value is there.
bool ModuleLink::request(const std::string& expression, std::uint32_t marker, std::string& error) {
    return sendText(std::string(ModuleCommands::clearVariables), error) &&
           sendText(addText(std::to_string(marker)), error) && sendText(addText(expression), error) &&
           sendText(addText(std::to_string(marker + 1)), error);
}

std::optional<float> ModuleLink::waitForValue(std::uint32_t marker, std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex);
    const auto isThere = [&] {
        return values && (*values)[0] == static_cast<float>(marker) && (*values)[2] == static_cast<float>(marker + 1);
    };
    changed.wait_for(lock, limit, [&] { return ending || isThere(); });
    return isThere() ? std::optional((*values)[1]) : std::nullopt;
}
