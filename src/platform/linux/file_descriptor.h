#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

/// Owns a file descriptor, or none (-1).
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : number(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (number >= 0) {
            ::close(number);
        }
    }

    int get() const { return number; }
    bool isOpen() const { return number >= 0; }

private:
    int number = -1;
};

/// Repeats a system call while a signal interrupts it.
template <typename SystemCall>
auto uninterrupted(SystemCall systemCall) {
    auto result = systemCall();
    while (result < 0 && errno == EINTR) {
        result = systemCall();
    }
    return result;
}
