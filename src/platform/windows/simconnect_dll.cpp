#include "platform/windows/simconnect_dll.h"

#include <windows.h>

namespace {

/// False when the DLL has no export of that name.
template <typename Operation>
bool bindExport(HMODULE dll, const char* name, std::function<Operation>& operation) {
    void* address = reinterpret_cast<void*>(GetProcAddress(dll, name));
    operation = reinterpret_cast<Operation*>(address);
    return address != nullptr;
}

bool bindExports(HMODULE dll, SimConnectLibrary& library) {
    return bindExport(dll, "SimConnect_Open", library.open) && bindExport(dll, "SimConnect_Close", library.close) &&
           bindExport(dll, "SimConnect_CallDispatch", library.callDispatch) &&
           bindExport(dll, "SimConnect_AddToDataDefinition", library.addToDataDefinition) &&
           bindExport(dll, "SimConnect_RequestDataOnSimObject", library.requestDataOnSimObject) &&
           bindExport(dll, "SimConnect_MapClientEventToSimEvent", library.mapClientEventToSimEvent) &&
           bindExport(dll, "SimConnect_TransmitClientEvent", library.transmitClientEvent) &&
           bindExport(dll, "SimConnect_MapClientDataNameToID", library.mapClientDataNameToId) &&
           bindExport(dll, "SimConnect_AddToClientDataDefinition", library.addToClientDataDefinition) &&
           bindExport(dll, "SimConnect_RequestClientData", library.requestClientData) &&
           bindExport(dll, "SimConnect_SetClientData", library.setClientData);
}

} // namespace

std::optional<SimConnectLibrary> loadSimConnectDll(const std::string& fileName) {
    const HMODULE dll =
        LoadLibraryExA(fileName.c_str(), nullptr, LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (dll == nullptr) {
        return std::nullopt;
    }
    SimConnectLibrary library;
    if (!bindExports(dll, library)) {
        FreeLibrary(dll);
        return std::nullopt;
    }
    return library;
}
