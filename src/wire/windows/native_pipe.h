#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

/// One overlapped operation on a pipe, with all the memory that the system touches until it is over.
struct PipeOperation : OVERLAPPED {
    PipeOperation() : OVERLAPPED{} {}

    std::vector<std::uint8_t> buffer;
    /// From its start until the caller has taken its outcome.
    bool begun = false;
    bool pending = false;
    /// The outcome, once it isn't pending.
    DWORD error = ERROR_SUCCESS;
    DWORD count = 0;

    void finish(DWORD outcome, DWORD byteCount);
};

/// An open pipe and the operations on it. Not synchronised: one thread at a time. The system cancels an operation when
/// the thread that began it ends, unless the handle has a completion port; so the pipe has one.
class NativePipe {
public:
    /// Takes over an open pipe. On failure closes it and returns null.
    static std::unique_ptr<NativePipe> adopt(HANDLE opened);

    NativePipe(HANDLE handle, HANDLE port) : handle(handle), port(port) {}
    /// Only after a `shut` that succeeded, or with nothing pending.
    ~NativePipe();
    NativePipe(const NativePipe&) = delete;
    NativePipe& operator=(const NativePipe&) = delete;

    /// Begins an operation that hasn't begun, by `call(handle, operation)`, which is a function of the system.
    template <typename Call>
    void begin(PipeOperation& operation, const Call& call) {
        static_cast<OVERLAPPED&>(operation) = {};
        operation.begun = true;
        operation.pending = true;
        if (call(handle, &operation) == FALSE) {
            const DWORD failure = GetLastError();
            if (failure != ERROR_IO_PENDING) {
                operation.finish(failure, 0);
            }
        }
    }

    /// Notes the operations that have ended, waiting up to the limit for the first.
    void collect(DWORD limitMs = 0);

    /// Ends all operations. False: the system hasn't let go of one in time, so this object must never be destroyed.
    bool shut();

    /// On a listening pipe this is the wait for a client.
    PipeOperation read;
    PipeOperation write;
    /// What was read and not yet received, in the read's buffer.
    std::span<const std::uint8_t> unreceived;

private:
    bool anyPending() const { return read.pending || write.pending; }
    void closeHandle();

    HANDLE handle;
    HANDLE port;
};
