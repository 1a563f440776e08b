// The operations that other subsystems call.

#include "sim/hresult_text.h"
#include "sim/sim_client_session.h"

namespace {

constexpr const char* notConnected = "SimConnect is not connected";

} // namespace

SimConnectHandle SimClientSession::connectedHandle() {
    const std::lock_guard lock(mutex);
    return connected ? handle : nullptr;
}

SimConnectHandle SimClientSession::usableHandle(std::string& error) {
    const SimConnectHandle session = connectedHandle();
    if (session == nullptr) {
        error = notConnected;
    }
    return session;
}

bool SimClientSession::transmitEvent(const std::string& eventName, std::string& error) {
    if (eventName.empty()) {
        error = "SimConnect event name is empty";
        return false;
    }
    SimConnectHandle session = nullptr;
    std::uint32_t eventId = 0;
    if (!resolveEvent(eventName, session, eventId, error)) {
        return false;
    }
    const SimConnectResult result =
        library.transmitClientEvent(session, simConnectObjectIdUser, eventId, 0, simConnectGroupPriorityHighest,
                                    simConnectEventFlagGroupIdIsPriority);
    return callSucceeded("SimConnect_TransmitClientEvent", result, error);
}

bool SimClientSession::resolveEvent(const std::string& eventName, SimConnectHandle& session, std::uint32_t& eventId,
                                    std::string& error) {
    const std::lock_guard lock(mutex);
    if (handle == nullptr || !connected) {
        error = notConnected;
        return false;
    }
    session = handle;
    const auto known = eventIds.find(eventName);
    if (known != eventIds.end()) {
        eventId = known->second;
        return true;
    }
    // Used up even if the call fails: the simulator may have taken the number.
    eventId = nextEventId++;
    const SimConnectResult result = library.mapClientEventToSimEvent(session, eventId, eventName.c_str());
    if (!callSucceeded("SimConnect_MapClientEventToSimEvent", result, error)) {
        return false;
    }
    eventIds.emplace(eventName, eventId);
    return true;
}

bool SimClientSession::mapClientDataName(const std::string& name, std::uint32_t clientDataId, std::string& error) {
    const SimConnectHandle session = usableHandle(error);
    if (session == nullptr) {
        return false;
    }
    const SimConnectResult result = library.mapClientDataNameToId(session, name.c_str(), clientDataId);
    return callSucceeded("SimConnect_MapClientDataNameToID", result, error);
}

bool SimClientSession::addClientDataDefinition(std::uint32_t definitionId, std::uint32_t size, std::string& error) {
    const SimConnectHandle session = usableHandle(error);
    if (session == nullptr) {
        return false;
    }
    const SimConnectResult result =
        library.addToClientDataDefinition(session, definitionId, 0, size, 0.0F, simConnectUnused);
    return callSucceeded("SimConnect_AddToClientDataDefinition", result, error);
}

bool SimClientSession::requestClientData(std::uint32_t clientDataId, std::uint32_t requestId,
                                         std::uint32_t definitionId, std::string& error) {
    const SimConnectHandle session = usableHandle(error);
    if (session == nullptr) {
        return false;
    }
    const SimConnectResult result =
        library.requestClientData(session, clientDataId, requestId, definitionId, simConnectClientDataPeriodOnSet,
                                  simConnectRequestFlagChanged, 0, 0, 0);
    return callSucceeded("SimConnect_RequestClientData", result, error);
}
