#pragma once

#include "wire/byte_stream.h"
#include "wire/pipe.h"
#include "wire/simconnect_cfg.h"
#include "wire/socket.h"

#include <cstdint>
#include <optional>
#include <string>

/// Where the virtual simulator listens: a port of 127.0.0.1 or a local pipe. Can stop and begin again there. Not
/// synchronised.
class SimulatorListener {
public:
    SimulatorListener() = default;
    /// A port, 0 for any free one.
    SimulatorListener(std::uint16_t port, int receiveBufferBytes)
        : wantedPort(port), receiveBuffer(receiveBufferBytes) {}
    SimulatorListener(const std::string& name, int receiveBufferBytes)
        : pipeName(name), pipe(name, receiveBufferBytes) {}

    bool listening() const { return isPipe() ? pipe.valid() : socket.valid(); }
    /// False with the reason in `error`. Later calls listen where the first one did.
    bool listen(std::string& error);
    void close();
    /// The next client, or none.
    ByteStream accept();

    /// Where clients reach it, once it has listened.
    SimConnectEndpoint endpoint() const;
    /// What to wait for; none: it has to be looked at from time to time.
    std::optional<SocketInterest> interest() const;

private:
    bool isPipe() const { return !pipeName.empty(); }

    std::string pipeName;
    std::uint16_t wantedPort = 0;
    int receiveBuffer = 0;
    Socket socket;
    PipeListener pipe;
};
