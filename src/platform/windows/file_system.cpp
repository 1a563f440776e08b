#include "platform/file_system.h"

#include <windows.h>

#include <string_view>
#include <system_error>

namespace FileSystem {

std::filesystem::path fromBytes(const std::string& bytes) {
    const int size = static_cast<int>(bytes.size());
    const int wideSize = MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(wideSize), L'\0');
    MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, wide.data(), wideSize);
    return wide;
}

std::string toBytes(const std::filesystem::path& path) {
    const std::wstring& wide = path.native();
    const int wideSize = static_cast<int>(wide.size());
    const int size = WideCharToMultiByte(CP_ACP, 0, wide.data(), wideSize, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, wide.data(), wideSize, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

bool isAbsolute(const std::string& path) {
    // libstdc++ takes the two separators in front of a server's name for a root folder without a drive.
    const std::string_view separators = "/\\";
    const bool isServerPath = path.find_first_not_of(separators) == 2;
    return isServerPath || fromBytes(path).is_absolute();
}

bool copyFile(const std::string& from, const std::string& to, std::string& error) {
    // libstdc++ takes any two files of a drive for the same one here, and copies them in text mode.
    if (!CopyFileW(fromBytes(from).c_str(), fromBytes(to).c_str(), FALSE)) {
        error = std::system_category().message(static_cast<int>(GetLastError()));
        return false;
    }
    return true;
}

bool renameFile(const std::string& from, const std::string& to) {
    return MoveFileExW(fromBytes(from).c_str(), fromBytes(to).c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

std::optional<std::uint64_t> fileSize(const std::string& path) {
    // The directory entry, from which the C runtime answers, has the size that the file had when it was last closed.
    constexpr DWORD everySharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file = CreateFileW(fromBytes(path).c_str(), FILE_READ_ATTRIBUTES, everySharing, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return std::nullopt;
    }
    LARGE_INTEGER size{};
    const bool known = GetFileSizeEx(file, &size) != 0;
    CloseHandle(file);
    return known ? std::optional(static_cast<std::uint64_t>(size.QuadPart)) : std::nullopt;
}

} // namespace FileSystem
