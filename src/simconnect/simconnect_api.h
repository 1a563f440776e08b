#pragma once

// The C interface of the simulator's client library, for the eleven operations that the bridge uses, and the message
// records that it hands out. Source: the SimConnect SDK reference (function prototypes, SIMCONNECT_RECV structures,
// SIMCONNECT_EXCEPTION codes). Nothing here depends on the bridge, so that a library of this interface can be built
// from it alone.

#include <cstdint>

/// A session. Opaque; null means none.
using SimConnectHandle = void*;

/// An HRESULT: negative means failure. S_OK says only that the call was sent, not what the simulator makes of it.
using SimConnectResult = std::int32_t;

constexpr SimConnectResult simConnectOk = 0;
/// Open with nobody listening, or with a simulator that gives no session.
constexpr SimConnectResult simConnectFail = static_cast<SimConnectResult>(0x80004005U);
/// Open with a configuration index that SimConnect.cfg does not hold, or a null argument.
constexpr SimConnectResult simConnectInvalidArgument = static_cast<SimConnectResult>(0x80070057U);
/// STATUS_REMOTE_DISCONNECT: any call after the link was lost.
constexpr SimConnectResult simConnectRemoteDisconnect = static_cast<SimConnectResult>(0xC000013CU);

/// SIMCONNECT_RECV_ID, as far as the bridge looks at it.
enum SimConnectRecvId : std::uint32_t {
    simConnectRecvNull = 0,
    simConnectRecvException = 1,
    simConnectRecvOpen = 2,
    simConnectRecvQuit = 3,
    simConnectRecvEvent = 4,
    simConnectRecvSimobjectData = 8,
    simConnectRecvClientData = 16,
};

constexpr std::uint32_t simConnectUnused = 0xFFFFFFFFU;
constexpr std::uint32_t simConnectObjectIdUser = 0;
constexpr std::uint32_t simConnectDataTypeInt32 = 1;
constexpr std::uint32_t simConnectPeriodSimFrame = 3;
constexpr std::uint32_t simConnectClientDataPeriodOnSet = 3;
/// Both for simulation object data and for client data: send only what differs.
constexpr std::uint32_t simConnectRequestFlagChanged = 1;
constexpr std::uint32_t simConnectGroupPriorityHighest = 1;
constexpr std::uint32_t simConnectEventFlagGroupIdIsPriority = 0x10;

// Messages are packed to 1 byte on the wire and in memory.
#pragma pack(push, 1)

/// SIMCONNECT_RECV: the head of every message. `dwSize` counts the whole message, this head included.
struct SimConnectRecv {
    std::uint32_t dwSize;
    std::uint32_t dwVersion;
    std::uint32_t dwID;
};

/// SIMCONNECT_RECV_SIMOBJECT_DATA and SIMCONNECT_RECV_CLIENT_DATA: ten 32-bit words, followed by the data.
struct SimConnectRecvData {
    SimConnectRecv head;
    std::uint32_t dwRequestID;
    std::uint32_t dwObjectID;
    std::uint32_t dwDefineID;
    std::uint32_t dwFlags;
    std::uint32_t dwEntryNumber;
    std::uint32_t dwOutOf;
    std::uint32_t dwDefineCount;
};

#pragma pack(pop)

static_assert(sizeof(SimConnectRecv) == 12);
static_assert(sizeof(SimConnectRecvData) == 40);

/// Receives one message during SimConnect_CallDispatch. The buffer belongs to the library and is valid during the call.
using SimConnectDispatchProc = void (*)(SimConnectRecv* message, std::uint32_t size, void* context);

extern "C" {
SimConnectResult SimConnect_Open(SimConnectHandle* handle, const char* name, void* window, std::uint32_t userEvent,
                                 void* eventHandle, std::uint32_t configIndex);
SimConnectResult SimConnect_Close(SimConnectHandle handle);
SimConnectResult SimConnect_CallDispatch(SimConnectHandle handle, SimConnectDispatchProc proc, void* context);
SimConnectResult SimConnect_AddToDataDefinition(SimConnectHandle handle, std::uint32_t definitionId,
                                                const char* datumName, const char* unitsName, std::uint32_t datumType,
                                                float epsilon, std::uint32_t datumId);
SimConnectResult SimConnect_RequestDataOnSimObject(SimConnectHandle handle, std::uint32_t requestId,
                                                   std::uint32_t definitionId, std::uint32_t objectId,
                                                   std::uint32_t period, std::uint32_t flags, std::uint32_t origin,
                                                   std::uint32_t interval, std::uint32_t limit);
SimConnectResult SimConnect_MapClientEventToSimEvent(SimConnectHandle handle, std::uint32_t eventId,
                                                     const char* eventName);
SimConnectResult SimConnect_TransmitClientEvent(SimConnectHandle handle, std::uint32_t objectId, std::uint32_t eventId,
                                                std::uint32_t data, std::uint32_t groupId, std::uint32_t flags);
SimConnectResult SimConnect_MapClientDataNameToID(SimConnectHandle handle, const char* name,
                                                  std::uint32_t clientDataId);
SimConnectResult SimConnect_AddToClientDataDefinition(SimConnectHandle handle, std::uint32_t definitionId,
                                                      std::uint32_t offset, std::uint32_t sizeOrType, float epsilon,
                                                      std::uint32_t datumId);
SimConnectResult SimConnect_RequestClientData(SimConnectHandle handle, std::uint32_t clientDataId,
                                              std::uint32_t requestId, std::uint32_t definitionId, std::uint32_t period,
                                              std::uint32_t flags, std::uint32_t origin, std::uint32_t interval,
                                              std::uint32_t limit);
SimConnectResult SimConnect_SetClientData(SimConnectHandle handle, std::uint32_t clientDataId,
                                          std::uint32_t definitionId, std::uint32_t flags, std::uint32_t reserved,
                                          std::uint32_t unitSize, void* data);
}
