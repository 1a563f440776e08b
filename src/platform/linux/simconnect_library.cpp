#include "platform/network_simconnect.h"
#include "platform/system_parts.h"

SimConnectLibrary systemSimConnectLibrary() {
    return networkSimConnectLibrary();
}
