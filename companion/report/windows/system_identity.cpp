#include "companion/report/system_identity.h"

#include <windows.h>

#include <array>

namespace {

using RtlGetVersion = LONG(WINAPI*)(OSVERSIONINFOW* version);

} // namespace

std::string computerName() {
    std::array<char, MAX_COMPUTERNAME_LENGTH + 1> name{};
    auto size = static_cast<DWORD>(name.size());
    return GetComputerNameA(name.data(), &size) ? std::string(name.data(), size) : std::string();
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
