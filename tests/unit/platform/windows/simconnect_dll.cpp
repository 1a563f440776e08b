// A client library whose operations each answer with a number of their own.

#include "simconnect/simconnect_api.h"

extern "C" {

#ifdef NEEDS_ANOTHER_LIBRARY
int neededFunction();
#else
static int neededFunction() {
    return 2;
}
#endif

SimConnectResult SimConnect_Open(SimConnectHandle* handle, const char*, void*, std::uint32_t, void*,
                                 std::uint32_t configIndex) {
    *handle = handle;
    return 100 + static_cast<SimConnectResult>(configIndex);
}

SimConnectResult SimConnect_Close(SimConnectHandle) {
    return neededFunction();
}

SimConnectResult SimConnect_CallDispatch(SimConnectHandle, SimConnectDispatchProc proc, void* context) {
    SimConnectRecv message{sizeof message, 5, simConnectRecvQuit};
    proc(&message, sizeof message, context);
    return 3;
}

SimConnectResult SimConnect_AddToDataDefinition(SimConnectHandle, std::uint32_t, const char*, const char*,
                                                std::uint32_t, float, std::uint32_t datumId) {
    return datumId == simConnectUnused ? 4 : -4;
}

SimConnectResult SimConnect_RequestDataOnSimObject(SimConnectHandle, std::uint32_t, std::uint32_t, std::uint32_t,
                                                   std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                                                   std::uint32_t limit) {
    return 500 + static_cast<SimConnectResult>(limit);
}

SimConnectResult SimConnect_MapClientEventToSimEvent(SimConnectHandle, std::uint32_t, const char*) {
    return 6;
}

SimConnectResult SimConnect_TransmitClientEvent(SimConnectHandle, std::uint32_t, std::uint32_t, std::uint32_t,
                                                std::uint32_t, std::uint32_t flags) {
    return 700 + static_cast<SimConnectResult>(flags);
}

SimConnectResult SimConnect_MapClientDataNameToID(SimConnectHandle, const char*, std::uint32_t) {
    return 8;
}

SimConnectResult SimConnect_AddToClientDataDefinition(SimConnectHandle, std::uint32_t, std::uint32_t, std::uint32_t,
                                                      float, std::uint32_t) {
    return 9;
}

SimConnectResult SimConnect_RequestClientData(SimConnectHandle, std::uint32_t, std::uint32_t, std::uint32_t,
                                              std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                                              std::uint32_t) {
    return 10;
}

#ifndef LACKS_AN_OPERATION
SimConnectResult SimConnect_SetClientData(SimConnectHandle, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                                          std::uint32_t unitSize, void* data) {
    return 1100 + static_cast<const std::uint8_t*>(data)[unitSize - 1];
}
#endif
}
