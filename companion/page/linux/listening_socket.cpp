#include "companion/page/listening_socket.h"

#include <sys/socket.h>

void takePortAlone(std::intptr_t socket) {
    const int yes = 1;
    setsockopt(static_cast<int>(socket), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
}
