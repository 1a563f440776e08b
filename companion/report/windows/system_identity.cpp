#include "companion/report/system_identity.h"

#include <windows.h>

#include <array>

namespace {

using RtlGetVersion = LONG(WINAPI*)(OSVERSIONINFOW* version);

} // namespace

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
    // GetVersionEx answers what the manifest allows, this function what is there. Wine has its version in the same
    // library.
    const HMODULE ntdll = GetModuleHandleA("ntdll.dll");
    const auto getVersion =
        reinterpret_cast<RtlGetVersion>(reinterpret_cast<void*>(GetProcAddress(ntdll, "RtlGetVersion")));
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (getVersion == nullptr || getVersion(&version) != 0) {
        return "Windows";
    }
    return "Windows " + std::to_string(version.dwMajorVersion) + '.' + std::to_string(version.dwMinorVersion) + '.' +
           std::to_string(version.dwBuildNumber) +
           (GetProcAddress(ntdll, "wine_get_version") == nullptr ? "" : " (Wine)");
}
