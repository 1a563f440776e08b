#include "platform/windows/simconnect_dll.h"

#include "platform/windows/simconnect_dll_fault.h"

#include <windows.h>

namespace {

/// Binds one export after the other and remembers the first missing one.
class Exports {
public:
    explicit Exports(HMODULE dll) : dll(dll) {}

    template <typename Operation>
    void bind(const char* name, std::function<Operation>& operation) {
        void* address = reinterpret_cast<void*>(GetProcAddress(dll, name));
        operation = reinterpret_cast<Operation*>(address);
        if (address == nullptr && missing.empty()) {
            missing = name;
        }
    }
    const std::string& firstMissing() const { return missing; }

private:
    HMODULE dll;
    std::string missing;
};

SimConnectLibrary bindAll(Exports& exports) {
    SimConnectLibrary library;
    exports.bind("SimConnect_Open", library.open);
    exports.bind("SimConnect_Close", library.close);
    exports.bind("SimConnect_CallDispatch", library.callDispatch);
    exports.bind("SimConnect_AddToDataDefinition", library.addToDataDefinition);
    exports.bind("SimConnect_RequestDataOnSimObject", library.requestDataOnSimObject);
    exports.bind("SimConnect_MapClientEventToSimEvent", library.mapClientEventToSimEvent);
    exports.bind("SimConnect_TransmitClientEvent", library.transmitClientEvent);
    exports.bind("SimConnect_MapClientDataNameToID", library.mapClientDataNameToId);
    exports.bind("SimConnect_AddToClientDataDefinition", library.addToClientDataDefinition);
    exports.bind("SimConnect_RequestClientData", library.requestClientData);
    exports.bind("SimConnect_SetClientData", library.setClientData);
    return library;
}

/// Null with the system's reason in `code`.
HMODULE loadQuietly(const std::string& fileName, DWORD& code) {
    // A message box about a bad library would wait for a click, but a cockpit may have neither mouse nor keyboard.
    DWORD modeBefore = 0;
    SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &modeBefore);
    const HMODULE dll =
        LoadLibraryExA(fileName.c_str(), nullptr, LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    code = GetLastError();
    SetThreadErrorMode(modeBefore, nullptr);
    return dll;
}

} // namespace

std::optional<SimConnectLibrary> loadSimConnectDll(const std::string& fileName, std::string& error) {
    DWORD code = 0;
    const HMODULE dll = loadQuietly(fileName, code);
    if (dll == nullptr) {
        error = simConnectDllFault(fileName, code);
        return std::nullopt;
    }
    Exports exports(dll);
    SimConnectLibrary library = bindAll(exports);
    if (!exports.firstMissing().empty()) {
        FreeLibrary(dll);
        error = simConnectDllLacks(fileName, exports.firstMissing());
        return std::nullopt;
    }
    return library;
}
