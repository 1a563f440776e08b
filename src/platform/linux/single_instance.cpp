#include "platform/linux/single_instance.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

SingleInstance takeSingleInstance(const std::string& name) {
    // A leading zero byte makes the name an abstract one: no file is left behind, however the process ends.
    const std::string abstractName = std::string(1, '\0') + name + "." + std::to_string(getuid());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (abstractName.size() > sizeof address.sun_path) {
        return SingleInstance::Unavailable;
    }
    std::memcpy(address.sun_path, abstractName.data(), abstractName.size());
    const auto addressSize = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + abstractName.size());
    const int lock = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (lock < 0) {
        return SingleInstance::Unavailable;
    }
    if (bind(lock, reinterpret_cast<const sockaddr*>(&address), addressSize) == 0) {
        // The open socket is the lock; the end of the process closes it.
        return SingleInstance::Acquired;
    }
    const bool isTaken = errno == EADDRINUSE;
    close(lock);
    return isTaken ? SingleInstance::AlreadyRunning : SingleInstance::Unavailable;
}
