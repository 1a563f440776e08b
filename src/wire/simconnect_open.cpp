#include "wire/simconnect_open.h"

#include "wire/byte_stream.h"
#include "wire/requests.h"
#include "wire/session_registry.h"
#include "wire/wire_session.h"

#include <memory>
#include <utility>

namespace {

constexpr std::chrono::seconds connectLimit{5};

ByteStream connectTo(const SimConnectEndpoint& endpoint, std::chrono::milliseconds busyPipeLimit) {
    if (!endpoint.pipe.empty()) {
        return connectPipe(endpoint.address, endpoint.pipe, busyPipeLimit);
    }
    return connectSocket(endpoint.address, endpoint.port, endpoint.family, connectLimit);
}

} // namespace

SimConnectResult simConnectOpenAt(SimConnectHandle* handle, const char* name, const SimConnectEndpoint& endpoint,
                                  SimConnectOpenLimits limits) {
    if (handle == nullptr || !SimConnectWire::isName(name)) {
        return simConnectInvalidArgument;
    }
    *handle = nullptr;
    for (const std::uint32_t protocol : SimConnectWire::protocolVersions) {
        ByteStream stream = connectTo(endpoint, limits.busyPipe);
        if (!stream.valid()) {
            break;
        }
        auto session = std::make_shared<WireSession>(std::move(stream), SessionLimits{}, protocol);
        const OpenOutcome outcome = session->open(name, limits.answer);
        if (outcome == OpenOutcome::Usable) {
            *handle = openSessions().add(std::move(session));
            return simConnectOk;
        }
        if (outcome == OpenOutcome::Refused) {
            break;
        }
    }
    return simConnectFail;
}

SimConnectResult simConnectOpenAtFirst(SimConnectHandle* handle, const char* name, const SimConnectEndpoints& endpoints,
                                       SimConnectOpenLimits limits) {
    SimConnectResult result = simConnectFail;
    for (const SimConnectEndpoint& endpoint : endpoints) {
        result = simConnectOpenAt(handle, name, endpoint, limits);
        if (result != simConnectFail) {
            break;
        }
    }
    return result;
}
