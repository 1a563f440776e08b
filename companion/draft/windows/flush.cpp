#include "companion/draft/flush.h"

#include "platform/file_system.h"

#include <windows.h>

#include <system_error>

std::string flushToDisk(const std::string& path) {
    const std::wstring name = FileSystem::fromBytes(path);
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return "";
    }
    constexpr DWORD everySharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file =
        CreateFileW(name.c_str(), GENERIC_WRITE, everySharing, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    const bool isFlushed = file != INVALID_HANDLE_VALUE && FlushFileBuffers(file) != 0;
    const DWORD failure = GetLastError();
    CloseHandle(file);
    return isFlushed ? "" : std::system_category().message(static_cast<int>(failure));
}
