#include "companion/doctor/system_text.h"

#include "platform/file_system.h"

#include <windows.h>

std::string bytesFromUtf8(const std::string& path) {
    const int size = static_cast<int>(path.size());
    const int wideSize = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(wideSize), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path.data(), size, wide.data(), wideSize);
    return FileSystem::toBytes(wide);
}
