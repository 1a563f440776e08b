#include "platform/windows/console.h"

#include <windows.h>

#include <atomic>
#include <cstdio>

namespace {

// The system passes a handler no argument of its own.
std::atomic<ControlHandler> controlHandler{nullptr};

BOOL WINAPI onConsoleEvent(DWORD event) {
    return controlHandler.load()(event) ? TRUE : FALSE;
}

void reopenUnlessRedirected(DWORD standardHandle, const char* device, const char* mode, std::FILE* stream) {
    const DWORD type = GetFileType(GetStdHandle(standardHandle));
    if (type == FILE_TYPE_DISK || type == FILE_TYPE_PIPE) {
        return;
    }
    std::FILE* reopened = nullptr;
    freopen_s(&reopened, device, mode, stream);
}

} // namespace

void attachToParentConsole() {
    if (!AttachConsole(ATTACH_PARENT_PROCESS)) {
        return;
    }
    reopenUnlessRedirected(STD_OUTPUT_HANDLE, "CONOUT$", "w", stdout);
    reopenUnlessRedirected(STD_ERROR_HANDLE, "CONOUT$", "w", stderr);
    reopenUnlessRedirected(STD_INPUT_HANDLE, "CONIN$", "r", stdin);
}

void installConsoleHandler(ControlHandler handler) {
    controlHandler.store(handler);
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}
