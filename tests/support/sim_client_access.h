#pragma once

#include "sim/simconnect_client.h"

/// Reaches into the client where calls from outside don't.
struct SimConnectClientAccess {
    static bool isRunning(const SimConnectClient& client) { return client.running; }
    static bool openSession(SimConnectClient& client, std::string& error) { return client.openSession(error); }
    static void watchBattery(SimConnectClient& client) { client.watchBattery(); }
    static void disconnect(SimConnectClient& client) { client.disconnect("test"); }
    static void dispatch(SimConnectRecv* message, std::uint32_t size, void* context) {
        SimConnectClient::dispatch(message, size, context);
    }
};
