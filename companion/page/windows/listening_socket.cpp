#include "companion/page/listening_socket.h"

#include <winsock2.h>

void takePortAlone(std::intptr_t socket) {
    const BOOL yes = TRUE;
    setsockopt(static_cast<SOCKET>(socket), SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&yes),
               sizeof(yes));
}
