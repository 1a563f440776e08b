#include "simulation/simulator/simulator_listener.h"

bool SimulatorListener::listen(std::string& error) {
    if (isPipe()) {
        return pipe.listen(error);
    }
    socket = listenOnLoopback(wantedPort, receiveBuffer, error);
    if (socket.valid()) {
        wantedPort = socket.localPort();
    }
    return socket.valid();
}

void SimulatorListener::close() {
    socket.close();
    pipe.close();
}

ByteStream SimulatorListener::accept() {
    if (isPipe()) {
        return pipe.accept();
    }
    return socket.accept();
}

std::optional<SocketInterest> SimulatorListener::interest() const {
    if (isPipe()) {
        return std::nullopt;
    }
    return SocketInterest{socket.number(), true, false};
}

SimConnectEndpoint SimulatorListener::endpoint() const {
    if (isPipe()) {
        return {.address = ".", .port = 0, .family = AddressFamily::Any, .pipe = pipeName};
    }
    return {.address = "127.0.0.1", .port = wantedPort, .family = AddressFamily::Ipv4};
}
