#include "simulation/simulator/simulator_listener.h"

bool SimulatorListener::listen(std::string& error) {
    return isPipe() ? pipe.listen(error) : socket.listen(error);
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
    return SocketInterest{socket.handle(), true, false};
}

SimConnectEndpoint SimulatorListener::endpoint() const {
    if (isPipe()) {
        return {.address = ".", .port = 0, .family = AddressFamily::Any, .pipe = pipeName};
    }
    return {.address = "127.0.0.1", .port = socket.port(), .family = AddressFamily::Ipv4};
}
