#include "platform/network_simconnect.h"
#include "platform/system_parts.h"
#include "platform/windows/simconnect_dll.h"

namespace {

struct LoadedLibrary {
    SimConnectLibrary operations;
    std::string notice;
};

const LoadedLibrary& loaded() {
    static const LoadedLibrary library = [] {
        std::string error;
        const auto fromDll = loadSimConnectDll("SimConnect.dll", error);
        return fromDll ? LoadedLibrary{*fromDll, {}}
                       : LoadedLibrary{networkSimConnectLibrary(), error + "; using the built-in SimConnect client"};
    }();
    return library;
}

/// Takes the place of an operation until its first use, which loads the library.
template <auto operation>
constexpr auto lazily = [](auto... arguments) { return (loaded().operations.*operation)(arguments...); };

} // namespace

SimConnectLibrary systemSimConnectLibrary() {
    using Library = SimConnectLibrary;
    Library library;
    library.open = lazily<&Library::open>;
    library.close = lazily<&Library::close>;
    library.callDispatch = lazily<&Library::callDispatch>;
    library.addToDataDefinition = lazily<&Library::addToDataDefinition>;
    library.requestDataOnSimObject = lazily<&Library::requestDataOnSimObject>;
    library.mapClientEventToSimEvent = lazily<&Library::mapClientEventToSimEvent>;
    library.transmitClientEvent = lazily<&Library::transmitClientEvent>;
    library.mapClientDataNameToId = lazily<&Library::mapClientDataNameToId>;
    library.addToClientDataDefinition = lazily<&Library::addToClientDataDefinition>;
    library.requestClientData = lazily<&Library::requestClientData>;
    library.setClientData = lazily<&Library::setClientData>;
    library.notice = [] { return loaded().notice; };
    return library;
}
