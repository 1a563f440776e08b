#include "simconnect/simconnect_api.h"

#include "wire/cfg_folders.h"
#include "wire/requests.h"
#include "wire/session_registry.h"
#include "wire/simconnect_open.h"

#include <memory>

namespace {

template <typename Encode>
SimConnectResult request(SimConnectHandle handle, const Encode& encode) {
    const std::shared_ptr<WireSession> session = openSessions().find(handle);
    return session == nullptr ? simConnectInvalidArgument : session->request(encode);
}

} // namespace

// Clients that want to be woken pass a window or an event object; this library is polled.
SimConnectResult SimConnect_Open(SimConnectHandle* handle, const char* name, void* /*window*/,
                                 std::uint32_t /*userEvent*/, void* /*eventHandle*/, std::uint32_t configIndex) {
    SimConnectEndpoints endpoints;
    const SimConnectResult found = findSimConnectEndpoints(simConnectCfgFolders(), configIndex, endpoints);
    return found == simConnectOk ? simConnectOpenAtFirst(handle, name, endpoints) : found;
}

SimConnectResult SimConnect_Close(SimConnectHandle handle) {
    const std::shared_ptr<WireSession> session = openSessions().remove(handle);
    if (session == nullptr) {
        return simConnectInvalidArgument;
    }
    session->close();
    return simConnectOk;
}

SimConnectResult SimConnect_CallDispatch(SimConnectHandle handle, SimConnectDispatchProc proc, void* context) {
    const std::shared_ptr<WireSession> session = openSessions().find(handle);
    if (session == nullptr || proc == nullptr) {
        return simConnectInvalidArgument;
    }
    return session->dispatch(proc, context);
}

SimConnectResult SimConnect_AddToDataDefinition(SimConnectHandle handle, std::uint32_t definitionId,
                                                const char* datumName, const char* unitsName, std::uint32_t datumType,
                                                float epsilon, std::uint32_t datumId) {
    // A variable without a unit, such as a text, is requested with none.
    const char* const units = unitsName == nullptr ? "" : unitsName;
    if (!SimConnectWire::isName(datumName) || !SimConnectWire::isName(units)) {
        return simConnectInvalidArgument;
    }
    return request(handle, [&](auto& out, auto head) {
        SimConnectWire::appendAddToDataDefinition(out, head, definitionId, datumName, units, datumType, epsilon,
                                                  datumId);
    });
}

SimConnectResult SimConnect_RequestDataOnSimObject(SimConnectHandle handle, std::uint32_t requestId,
                                                   std::uint32_t definitionId, std::uint32_t objectId,
                                                   std::uint32_t period, std::uint32_t flags, std::uint32_t origin,
                                                   std::uint32_t interval, std::uint32_t limit) {
    return request(handle, [&](auto& out, auto head) {
        SimConnectWire::appendRequestDataOnSimObject(out, head, requestId, definitionId, objectId, period, flags,
                                                     origin, interval, limit);
    });
}

SimConnectResult SimConnect_MapClientEventToSimEvent(SimConnectHandle handle, std::uint32_t eventId,
                                                     const char* eventName) {
    // An event without a name is the client's own.
    const char* const name = eventName == nullptr ? "" : eventName;
    if (!SimConnectWire::isName(name)) {
        return simConnectInvalidArgument;
    }
    return request(handle, [&](auto& out, auto head) {
        SimConnectWire::appendMapClientEventToSimEvent(out, head, eventId, name);
    });
}

SimConnectResult SimConnect_TransmitClientEvent(SimConnectHandle handle, std::uint32_t objectId, std::uint32_t eventId,
                                                std::uint32_t data, std::uint32_t groupId, std::uint32_t flags) {
    return request(handle, [&](auto& out, auto head) {
        SimConnectWire::appendTransmitClientEvent(out, head, objectId, eventId, data, groupId, flags);
    });
}

SimConnectResult SimConnect_MapClientDataNameToID(SimConnectHandle handle, const char* name,
                                                  std::uint32_t clientDataId) {
    if (!SimConnectWire::isName(name)) {
        return simConnectInvalidArgument;
    }
    return request(handle, [&](auto& out, auto head) {
        SimConnectWire::appendMapClientDataNameToId(out, head, name, clientDataId);
    });
}

SimConnectResult SimConnect_AddToClientDataDefinition(SimConnectHandle handle, std::uint32_t definitionId,
                                                      std::uint32_t offset, std::uint32_t sizeOrType, float epsilon,
                                                      std::uint32_t datumId) {
    return request(handle, [&](auto& out, auto head) {
        SimConnectWire::appendAddToClientDataDefinition(out, head, definitionId, offset, sizeOrType, epsilon, datumId);
    });
}

SimConnectResult SimConnect_RequestClientData(SimConnectHandle handle, std::uint32_t clientDataId,
                                              std::uint32_t requestId, std::uint32_t definitionId, std::uint32_t period,
                                              std::uint32_t flags, std::uint32_t origin, std::uint32_t interval,
                                              std::uint32_t limit) {
    return request(handle, [&](auto& out, auto head) {
        SimConnectWire::appendRequestClientData(out, head, clientDataId, requestId, definitionId, period, flags, origin,
                                                interval, limit);
    });
}

SimConnectResult SimConnect_SetClientData(SimConnectHandle handle, std::uint32_t clientDataId,
                                          std::uint32_t definitionId, std::uint32_t flags, std::uint32_t /*reserved*/,
                                          std::uint32_t unitSize, void* data) {
    if (data == nullptr || unitSize == 0 || unitSize > SimConnectWire::maximumClientData) {
        return simConnectInvalidArgument;
    }
    const std::span bytes(static_cast<const std::uint8_t*>(data), unitSize);
    return request(handle, [&](auto& out, auto head) {
        SimConnectWire::appendSetClientData(out, head, clientDataId, definitionId, flags, bytes);
    });
}
