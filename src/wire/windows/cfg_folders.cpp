#include "wire/cfg_folders.h"

#include <windows.h>

#include <array>

namespace {

using PathBuffer = std::array<char, 32768>;

std::string executableFolder() {
    PathBuffer path{};
    const DWORD length = GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    const std::string executable(path.data(), length);
    const std::size_t separator = executable.find_last_of("/\\");
    return separator == std::string::npos ? std::string() : executable.substr(0, separator);
}

std::string homeFolder() {
    PathBuffer path{};
    const DWORD length = GetEnvironmentVariableA("USERPROFILE", path.data(), static_cast<DWORD>(path.size()));
    return std::string(path.data(), length < path.size() ? length : 0);
}

} // namespace

std::vector<std::string> simConnectCfgFolders() {
    return {executableFolder(), homeFolder()};
}
