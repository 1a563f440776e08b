#pragma once

#include "simulation/simulator/pipe_listener.h"
#include "simulation/simulator/socket_listener.h"
#include "simulation/simulator/socket_wait.h"
#include "wire/byte_stream.h"
#include "wire/simconnect_cfg.h"

#include <cstdint>
#include <optional>
#include <string>

/// Listens on a port of 127.0.0.1 or a local pipe. Can close and listen there again. Not synchronised.
class SimulatorListener {
public:
    SimulatorListener() = default;
    /// A port, 0 for any free one. A receive buffer of 0 is the system's default.
    explicit SimulatorListener(std::uint16_t port, int receiveBufferBytes = 0) : socket(port, receiveBufferBytes) {}
    explicit SimulatorListener(const std::string& pipeName, int receiveBufferBytes = 0)
        : pipeName(pipeName), pipe(pipeName, receiveBufferBytes) {}

    bool listening() const { return isPipe() ? pipe.valid() : socket.valid(); }
    /// False with the reason in `error`. Later calls listen where the first one did.
    bool listen(std::string& error);
    void close();
    /// The next client, or none.
    ByteStream accept();

    /// Where clients reach it, once it has listened.
    SimConnectEndpoint endpoint() const;
    /// What to wait for. None: nothing ends a wait, so `accept` must be called from time to time.
    std::optional<SocketInterest> interest() const;

private:
    bool isPipe() const { return !pipeName.empty(); }

    std::string pipeName;
    SocketListener socket;
    PipeListener pipe;
};
