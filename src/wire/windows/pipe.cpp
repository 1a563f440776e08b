#include "wire/pipe.h"

#include "wire/deadline.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* localPipe = R"(\\.\pipe\)";
constexpr std::size_t transferPiece = 64UL * 1024UL;
constexpr DWORD defaultBuffer = 64UL * 1024UL;
// The system ends what is cancelled on a local pipe at once; another machine's may keep it waiting.
constexpr DWORD cancelLimitMs = 1000;

/// One read, write or wait for a client, with all that the system touches until it is over.
struct Operation {
    OVERLAPPED record{};
    std::vector<std::uint8_t> buffer;
    /// From its begin until its outcome is told to the caller.
    bool begun = false;
    bool pending = false;
    /// The outcome, when it isn't pending.
    DWORD error = ERROR_SUCCESS;
    DWORD count = 0;

    void finish(DWORD outcome, DWORD byteCount) {
        pending = false;
        error = outcome;
        count = byteCount;
    }
};

HANDLE handleOrNull(HANDLE handle) {
    return handle == INVALID_HANDLE_VALUE ? nullptr : handle;
}

// Not every system that runs Windows programs heeds the flag for a pipe's first instance.
bool isMade(const std::string& path) {
    return WaitNamedPipeA(path.c_str(), 1) != FALSE || GetLastError() == ERROR_SEM_TIMEOUT;
}

} // namespace

/// An open pipe and the operations on it. Whatever thread began an operation, it goes on when the thread ends: the
/// system would else cancel it, but not on a handle that has a completion port.
struct Pipe::Native {
    Native(HANDLE opened, HANDLE completionPort) : handle(opened), port(completionPort) {}
    ~Native() {
        closeHandle();
        CloseHandle(port);
    }
    Native(const Native&) = delete;
    Native& operator=(const Native&) = delete;

    /// Takes over an open pipe, or closes it and gives null.
    static std::unique_ptr<Native> adopt(HANDLE opened) {
        const HANDLE port = CreateIoCompletionPort(opened, nullptr, 0, 1);
        if (port == nullptr) {
            CloseHandle(opened);
            return nullptr;
        }
        return std::make_unique<Native>(opened, port);
    }

    /// Begins an operation that isn't begun, by `call(record)`, which is one of the system's.
    template <typename Call>
    void begin(Operation& operation, const Call& call) {
        operation.record = {};
        operation.begun = true;
        operation.pending = true;
        if (call(&operation.record) == FALSE) {
            const DWORD failure = GetLastError();
            if (failure != ERROR_IO_PENDING) {
                operation.finish(failure, 0);
            }
        }
    }

    /// Notes the operations that have ended, waiting up to the limit for the first.
    void collect(DWORD limitMs = 0) {
        for (;;) {
            DWORD count = 0;
            ULONG_PTR key = 0;
            OVERLAPPED* ended = nullptr;
            const BOOL succeeded = GetQueuedCompletionStatus(port, &count, &key, &ended, limitMs);
            const DWORD outcome = succeeded != FALSE ? ERROR_SUCCESS : GetLastError();
            if (ended == nullptr) {
                return;
            }
            for (Operation* operation : operations()) {
                if (&operation->record == ended) {
                    operation->finish(outcome, count);
                }
            }
            limitMs = 0;
        }
    }

    /// Ends all operations. False: the system hasn't let go of one in time, so that this must never be destroyed.
    bool shut() {
        CancelIoEx(handle, nullptr);
        closeHandle();
        const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(cancelLimitMs);
        collect();
        while (anyPending() && millisecondsLeft(deadline) > 0) {
            collect(static_cast<DWORD>(millisecondsLeft(deadline)));
        }
        return !anyPending();
    }

    std::array<Operation*, 3> operations() { return {&read, &write, &connect}; }

    bool anyPending() {
        const auto all = operations();
        return std::any_of(all.begin(), all.end(), [](const Operation* operation) { return operation->pending; });
    }

    void closeHandle() {
        if (handle != nullptr) {
            CloseHandle(std::exchange(handle, nullptr));
        }
    }

    HANDLE handle;
    HANDLE port;
    Operation read;
    Operation write;
    Operation connect;
    /// What was read and not yet received, in the read's buffer.
    std::span<const std::uint8_t> unreceived;
};

Pipe::Pipe() = default;
Pipe::Pipe(std::unique_ptr<Native> opened) : native(std::move(opened)) {}
Pipe::Pipe(Pipe&& other) noexcept = default;

Pipe::~Pipe() {
    close();
}

Pipe& Pipe::operator=(Pipe&& other) noexcept {
    if (this != &other) {
        close();
        native = std::move(other.native);
    }
    return *this;
}

Transfer Pipe::send(std::span<const std::uint8_t> bytes) {
    if (!valid()) {
        return {};
    }
    Operation& write = native->write;
    if (!write.begun) {
        const auto piece = bytes.first(std::min(bytes.size(), transferPiece));
        write.buffer.assign(piece.begin(), piece.end());
        native->begin(write, [&](OVERLAPPED* record) {
            return WriteFile(native->handle, write.buffer.data(), static_cast<DWORD>(write.buffer.size()), nullptr,
                             record);
        });
    }
    native->collect();
    if (write.pending) {
        return {TransferStatus::WouldBlock, 0};
    }
    write.begun = false;
    return {write.error == ERROR_SUCCESS ? TransferStatus::Done : TransferStatus::Failed, write.count};
}

Transfer Pipe::receive(std::span<std::uint8_t> bytes) {
    if (!valid()) {
        return {};
    }
    Operation& read = native->read;
    if (native->unreceived.empty()) {
        if (!read.begun) {
            read.buffer.resize(transferPiece);
            native->begin(read, [&](OVERLAPPED* record) {
                return ReadFile(native->handle, read.buffer.data(), static_cast<DWORD>(read.buffer.size()), nullptr,
                                record);
            });
        }
        native->collect();
        if (read.pending) {
            return {TransferStatus::WouldBlock, 0};
        }
        read.begun = false;
        if (read.error != ERROR_SUCCESS) {
            return {read.error == ERROR_BROKEN_PIPE ? TransferStatus::Ended : TransferStatus::Failed, 0};
        }
        native->unreceived = std::span(read.buffer).first(read.count);
    }
    const auto piece = native->unreceived.first(std::min(native->unreceived.size(), bytes.size()));
    std::copy(piece.begin(), piece.end(), bytes.begin());
    native->unreceived = native->unreceived.subspan(piece.size());
    // A pipe can carry a message of no bytes, which is no end.
    return {piece.empty() ? TransferStatus::WouldBlock : TransferStatus::Done, piece.size()};
}

void Pipe::awaitData(std::chrono::milliseconds limit) {
    if (valid() && native->read.pending) {
        native->collect(static_cast<DWORD>(limit.count()));
    }
}

void Pipe::close() {
    if (valid() && !native->shut()) {
        // Given up for good: the system may still write to it.
        static_cast<void>(native.release());
    }
    native.reset();
}

PipeListener::PipeListener(std::string pipeName, int receiveBufferBytes)
    : name(std::move(pipeName)), receiveBuffer(receiveBufferBytes) {}

bool PipeListener::listen(std::string& error) {
    waiting = Pipe(makeInstance(error));
    owned = owned || valid();
    return valid();
}

std::unique_ptr<Pipe::Native> PipeListener::makeInstance(std::string& error) {
    const std::string path = localPipe + name;
    const std::string failure = "Failed to listen on pipe " + name + ": ";
    if (!owned && isMade(path)) {
        error = failure + "another program has it";
        return nullptr;
    }
    const DWORD first = owned ? 0 : FILE_FLAG_FIRST_PIPE_INSTANCE;
    const DWORD buffer = receiveBuffer > 0 ? static_cast<DWORD>(receiveBuffer) : defaultBuffer;
    const HANDLE handle = handleOrNull(CreateNamedPipeA(path.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | first,
                                                        PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS,
                                                        PIPE_UNLIMITED_INSTANCES, defaultBuffer, buffer, 0, nullptr));
    auto instance = handle == nullptr ? nullptr : Pipe::Native::adopt(handle);
    if (instance == nullptr) {
        error = failure + std::system_category().message(static_cast<int>(GetLastError()));
        return nullptr;
    }
    instance->begin(instance->connect, [&](OVERLAPPED* record) { return ConnectNamedPipe(handle, record); });
    return instance;
}

// A client that came before it was waited for is told as a failure, and so is one that has already gone: its pipe then
// says so.
Pipe PipeListener::accept() {
    if (!valid()) {
        return {};
    }
    waiting.native->collect();
    if (waiting.native->connect.pending) {
        return {};
    }
    Pipe accepted = std::move(waiting);
    std::string error;
    listen(error);
    return accepted;
}

bool havePipes() {
    return true;
}

Pipe connectPipe(const std::string& host, const std::string& name, std::chrono::milliseconds limit) {
    const std::string path = R"(\\)" + host + R"(\pipe\)" + name;
    const Clock::time_point deadline = Clock::now() + limit;
    for (;;) {
        // Whoever made the pipe may know who this is, but not act in its name.
        const HANDLE handle =
            handleOrNull(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                     FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
        if (handle != nullptr) {
            return Pipe(Pipe::Native::adopt(handle));
        }
        const bool busy = GetLastError() == ERROR_PIPE_BUSY;
        const int left = millisecondsLeft(deadline);
        if (!busy || left == 0 || WaitNamedPipeA(path.c_str(), static_cast<DWORD>(left)) == FALSE) {
            return {};
        }
    }
}
