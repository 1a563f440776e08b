#include "wire/pipe.h"

#include "wire/deadline.h"
#include "wire/windows/native_pipe.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t transferPiece = 64UL * 1024UL;

DWORD sizeOf(const std::vector<std::uint8_t>& buffer) {
    return static_cast<DWORD>(buffer.size());
}

void beginWrite(NativePipe& pipe, std::span<const std::uint8_t> bytes) {
    const auto piece = bytes.first(std::min(bytes.size(), transferPiece));
    pipe.write.buffer.assign(piece.begin(), piece.end());
    pipe.begin(pipe.write, [&](HANDLE handle, OVERLAPPED* record) {
        return WriteFile(handle, pipe.write.buffer.data(), sizeOf(pipe.write.buffer), nullptr, record);
    });
}

void beginRead(NativePipe& pipe) {
    pipe.read.buffer.resize(transferPiece);
    pipe.begin(pipe.read, [&](HANDLE handle, OVERLAPPED* record) {
        return ReadFile(handle, pipe.read.buffer.data(), sizeOf(pipe.read.buffer), nullptr, record);
    });
}

// Fills `unreceived` from a read, which may go on over several calls.
TransferStatus read(NativePipe& pipe) {
    if (!pipe.read.begun) {
        beginRead(pipe);
    }
    pipe.collect();
    if (pipe.read.pending) {
        return TransferStatus::WouldBlock;
    }
    pipe.read.begun = false;
    if (pipe.read.error != ERROR_SUCCESS) {
        return pipe.read.error == ERROR_BROKEN_PIPE ? TransferStatus::Ended : TransferStatus::Failed;
    }
    pipe.unreceived = std::span(pipe.read.buffer).first(pipe.read.count);
    return TransferStatus::Done;
}

// Null when the pipe can't be opened; the system's last error then says why.
HANDLE openPipe(const std::string& path) {
    // Lets the pipe's server identify this user but not act as this user.
    constexpr DWORD flags = FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
    const HANDLE handle =
        CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, flags, nullptr);
    return handle == INVALID_HANDLE_VALUE ? nullptr : handle;
}

} // namespace

Pipe::Pipe() = default;
Pipe::Pipe(std::unique_ptr<NativePipe> native) : native(std::move(native)) {}
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
    PipeOperation& write = native->write;
    if (!write.begun) {
        beginWrite(*native, bytes);
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
    if (native->unreceived.empty()) {
        if (const TransferStatus status = read(*native); status != TransferStatus::Done) {
            return {status, 0};
        }
    }
    const auto piece = native->unreceived.first(std::min(native->unreceived.size(), bytes.size()));
    std::copy(piece.begin(), piece.end(), bytes.begin());
    native->unreceived = native->unreceived.subspan(piece.size());
    // A pipe can carry a message of no bytes, which isn't the end.
    return {piece.empty() ? TransferStatus::WouldBlock : TransferStatus::Done, piece.size()};
}

void Pipe::awaitData(std::chrono::milliseconds limit) {
    if (valid() && native->read.pending) {
        native->collect(static_cast<DWORD>(limit.count()));
    }
}

void Pipe::close() {
    if (valid() && !native->shut()) {
        // Never freed: the system may still write to it.
        static_cast<void>(native.release());
    }
    native.reset();
}

bool havePipes() {
    return true;
}

Pipe connectPipe(const std::string& host, const std::string& name, std::chrono::milliseconds limit) {
    const std::string path = R"(\\)" + host + R"(\pipe\)" + name;
    const Clock::time_point deadline = Clock::now() + limit;
    for (;;) {
        if (const HANDLE handle = openPipe(path); handle != nullptr) {
            return Pipe(NativePipe::adopt(handle));
        }
        const bool busy = GetLastError() == ERROR_PIPE_BUSY;
        const int left = millisecondsLeft(deadline);
        if (!busy || left == 0 || WaitNamedPipeA(path.c_str(), static_cast<DWORD>(left)) == FALSE) {
            return {};
        }
    }
}
