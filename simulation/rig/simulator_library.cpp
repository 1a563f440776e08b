#include "simulation/rig/simulator_library.h"

#include "platform/network_simconnect.h"

SimConnectLibrary simulatorLibrary(const VirtualSimulator& simulator, SimConnectOpenLimits limits) {
    SimConnectLibrary library = networkSimConnectLibrary();
    library.open = [&simulator, limits](SimConnectHandle* handle, const char* name, void*, std::uint32_t, void*,
                                        std::uint32_t) {
        return simConnectOpenAt(handle, name, simulator.endpoint(), limits);
    };
    return library;
}
