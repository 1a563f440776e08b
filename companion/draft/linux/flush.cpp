#include "companion/draft/flush.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

std::string flushToDisk(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    // Some file systems have nothing to flush, and say so.
    const bool isFlushed = file >= 0 && (fsync(file) == 0 || errno == EINVAL);
    const int failure = errno;
    close(file);
    return isFlushed ? "" : std::generic_category().message(failure);
}
