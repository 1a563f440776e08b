#include "simulation/simulator/stream_reset.h"

#include "native_socket.h"

void resetStream(ByteStream& stream) {
    if (const Socket* const socket = stream.socket(); socket != nullptr) {
        linger atOnce{};
        atOnce.l_onoff = 1;
        atOnce.l_linger = 0;
        setsockopt(static_cast<NativeSocket::Handle>(socket->handle()), SOL_SOCKET, SO_LINGER,
                   reinterpret_cast<const char*>(&atOnce), sizeof(atOnce));
    }
    stream.close();
}
