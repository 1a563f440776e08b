#include "wire/windows/native_pipe.h"

#include "wire/deadline.h"

#include <chrono>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

// The system cancels operations on a local pipe at once; on another machine's pipe that may be slow.
constexpr std::chrono::seconds cancelLimit{1};

} // namespace

void PipeOperation::finish(DWORD outcome, DWORD byteCount) {
    pending = false;
    error = outcome;
    count = byteCount;
}

std::unique_ptr<NativePipe> NativePipe::adopt(HANDLE opened) {
    const HANDLE port = CreateIoCompletionPort(opened, nullptr, 0, 1);
    if (port == nullptr) {
        CloseHandle(opened);
        return nullptr;
    }
    return std::make_unique<NativePipe>(opened, port);
}

NativePipe::~NativePipe() {
    closeHandle();
    CloseHandle(port);
}

void NativePipe::collect(DWORD limitMs) {
    for (;;) {
        DWORD count = 0;
        ULONG_PTR key = 0;
        OVERLAPPED* ended = nullptr;
        const BOOL succeeded = GetQueuedCompletionStatus(port, &count, &key, &ended, limitMs);
        const DWORD outcome = succeeded != FALSE ? ERROR_SUCCESS : GetLastError();
        if (ended == nullptr) {
            return;
        }
        static_cast<PipeOperation*>(ended)->finish(outcome, count);
        limitMs = 0;
    }
}

bool NativePipe::shut() {
    CancelIoEx(handle, nullptr);
    closeHandle();
    const Clock::time_point deadline = Clock::now() + cancelLimit;
    collect();
    while (anyPending() && millisecondsLeft(deadline) > 0) {
        collect(static_cast<DWORD>(millisecondsLeft(deadline)));
    }
    return !anyPending();
}

void NativePipe::closeHandle() {
    if (handle != nullptr) {
        CloseHandle(std::exchange(handle, nullptr));
    }
}
