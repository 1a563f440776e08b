#include "platform/network_simconnect.h"

SimConnectLibrary networkSimConnectLibrary() {
    SimConnectLibrary library;
    library.open = SimConnect_Open;
    library.close = SimConnect_Close;
    library.callDispatch = SimConnect_CallDispatch;
    library.addToDataDefinition = SimConnect_AddToDataDefinition;
    library.requestDataOnSimObject = SimConnect_RequestDataOnSimObject;
    library.mapClientEventToSimEvent = SimConnect_MapClientEventToSimEvent;
    library.transmitClientEvent = SimConnect_TransmitClientEvent;
    library.mapClientDataNameToId = SimConnect_MapClientDataNameToID;
    library.addToClientDataDefinition = SimConnect_AddToClientDataDefinition;
    library.requestClientData = SimConnect_RequestClientData;
    library.setClientData = SimConnect_SetClientData;
    return library;
}
