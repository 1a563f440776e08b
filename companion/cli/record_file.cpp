#include "companion/cli/record_file.h"

#include "platform/file_system.h"

#include <cerrno>
#include <system_error>
#include <utility>

RecordFile::RecordFile(std::string path) : path(std::move(path)) {}

void RecordFile::begin() {
    const std::lock_guard lock(mutex);
    errno = 0;
    stream = FileSystem::openForWriting(path);
    if (!stream.is_open()) {
        reason = " can't be opened: " + std::generic_category().message(errno == 0 ? EIO : errno);
        hasFailed = true;
        return;
    }
    put(early);
}

void RecordFile::write(const std::string& text) {
    const std::lock_guard lock(mutex);
    if (stream.is_open()) {
        put(text);
    } else {
        early += text;
    }
}

std::string RecordFile::problem() const {
    const std::lock_guard lock(mutex);
    return hasFailed ? path + reason : "";
}

void RecordFile::put(const std::string& text) {
    if (!hasFailed && !(stream << text << std::flush)) {
        reason = " can't be written, or the disk is full; what is in it can be played";
        hasFailed = true;
    }
}
