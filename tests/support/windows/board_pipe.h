#pragma once

#include <windows.h>

#include <array>
#include <string>

/// The board's end of what CreateFile opens and overlapped reads work on: a named pipe of messages, for one opening.
class BoardPipe {
public:
    BoardPipe()
        : handle(CreateNamedPipeA(path.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE, PIPE_UNLIMITED_INSTANCES, 4096,
                                  4096, 0, nullptr)) {}
    ~BoardPipe() { hangUp(); }
    BoardPipe(const BoardPipe&) = delete;
    BoardPipe& operator=(const BoardPipe&) = delete;

    bool send(const std::string& bytes) const {
        DWORD count = 0;
        return WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) != 0;
    }

    std::string receive() const {
        std::array<char, 64> bytes{};
        DWORD count = 0;
        ReadFile(handle, bytes.data(), 64, &count, nullptr);
        return {bytes.data(), count};
    }

    void hangUp() {
        if (handle != INVALID_HANDLE_VALUE) {
            CloseHandle(handle);
        }
        handle = INVALID_HANDLE_VALUE;
    }

    const std::string path = "\\\\.\\pipe\\bridge-test-" + std::to_string(GetCurrentProcessId());

private:
    HANDLE handle;
};
