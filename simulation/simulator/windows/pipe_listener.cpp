#include "simulation/simulator/pipe_listener.h"

#include "wire/windows/native_pipe.h"

#include <windows.h>

#include <system_error>
#include <utility>

namespace {

constexpr const char* localPipe = R"(\\.\pipe\)";
constexpr DWORD defaultBuffer = 64UL * 1024UL;

// Not every system that runs Windows programs honours the flag for the first instance, so we look first.
bool isMade(const std::string& path) {
    return WaitNamedPipeA(path.c_str(), 1) != FALSE || GetLastError() == ERROR_SEM_TIMEOUT;
}

// Null when it fails; the system's last error then says why.
std::unique_ptr<NativePipe> createInstance(const std::string& path, bool first, int receiveBufferBytes) {
    const DWORD access = PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | (first ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0);
    const DWORD buffer = receiveBufferBytes > 0 ? static_cast<DWORD>(receiveBufferBytes) : defaultBuffer;
    const HANDLE handle = CreateNamedPipeA(path.c_str(), access, PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS,
                                           PIPE_UNLIMITED_INSTANCES, defaultBuffer, buffer, 0, nullptr);
    return handle == INVALID_HANDLE_VALUE ? nullptr : NativePipe::adopt(handle);
}

} // namespace

PipeListener::PipeListener(std::string name, int receiveBufferBytes)
    : name(std::move(name)), receiveBufferBytes(receiveBufferBytes) {}

bool PipeListener::listen(std::string& error) {
    auto made = makeInstance(error);
    instance = made.get();
    waiting = Pipe(std::move(made));
    owned = owned || valid();
    return valid();
}

std::unique_ptr<NativePipe> PipeListener::makeInstance(std::string& error) const {
    const std::string path = localPipe + name;
    const std::string failure = "Failed to listen on pipe " + name + ": ";
    if (!owned && isMade(path)) {
        error = failure + "another program has it";
        return nullptr;
    }
    auto made = createInstance(path, !owned, receiveBufferBytes);
    if (made == nullptr) {
        error = failure + std::system_category().message(static_cast<int>(GetLastError()));
        return nullptr;
    }
    made->begin(made->read, [](HANDLE handle, OVERLAPPED* record) { return ConnectNamedPipe(handle, record); });
    return made;
}

// A client that came before the wait for it ends the wait with an error, and so does one that has already gone. Both
// are accepted: a pipe whose client has left reports that itself.
Pipe PipeListener::accept() {
    if (!valid()) {
        return {};
    }
    instance->collect();
    if (instance->read.pending) {
        return {};
    }
    instance->read.begun = false;
    Pipe accepted = std::move(waiting);
    std::string error;
    listen(error);
    return accepted;
}
