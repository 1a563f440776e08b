#pragma once

#include "mobiflight/mobiflight_client.h"
#include "platform/platform.h"
#include "sim/simconnect_client.h"

#include <atomic>
#include <string>

/// Sends single commands to a simulator as the bridge does, as a client of its own: what it does on the shared channels
/// is to introduce itself. Any thread may send.
class CommandTrial {
public:
    CommandTrial(const SimConnectLibrary& library, const Host& host);
    ~CommandTrial();
    CommandTrial(const CommandTrial&) = delete;
    CommandTrial& operator=(const CommandTrial&) = delete;

    /// Looks for the simulator from now on. False with the reason in `error`.
    bool start(std::string& error);

    /// The simulator's module has answered.
    bool isReady() const { return mobiflight.isReady(); }
    /// There is a session with the simulator.
    bool isConnected() const { return simConnect.isConnected(); }

    /// False with the reason in `error` when it wasn't sent.
    bool send(const std::string& command, std::string& error);

private:
    /// Ends every sleep early.
    std::atomic<bool> ending{false};
    MobiFlightClient mobiflight;
    SimConnectClient simConnect;

    Host impatientHost(const Host& host);
};
