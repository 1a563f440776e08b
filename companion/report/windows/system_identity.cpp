#include "companion/report/system_identity.h"

#include "platform/windows/windows_version.h"

#include <windows.h>

#include <array>

std::vector<std::string> computerNames() {
    std::vector<std::string> names;
    // The first is cut off at 15 bytes.
    for (const COMPUTER_NAME_FORMAT format : {ComputerNameNetBIOS, ComputerNameDnsHostname}) {
        std::array<char, 256> name{};
        auto size = static_cast<DWORD>(name.size());
        if (GetComputerNameExA(format, name.data(), &size) && size > 0) {
            names.emplace_back(name.data(), size);
        }
    }
    return names;
}

std::string systemVersion() {
    const std::optional<WindowsVersion> version = windowsVersion();
    if (!version) {
        return "Windows";
    }
    const bool isWine = GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
    return "Windows " + std::to_string(version->major) + '.' + std::to_string(version->minor) + '.' +
           std::to_string(version->build) + (isWine ? " (Wine)" : "");
}
