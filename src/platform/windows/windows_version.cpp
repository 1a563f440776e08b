#include "platform/windows/windows_version.h"

#include <windows.h>

#include <utility>

namespace {

using RtlGetVersion = LONG(WINAPI*)(OSVERSIONINFOW* version);

/// Windows 10, version 1809, the oldest that is tested and that both simulators run on.
constexpr std::uint32_t oldestMajor = 10;
constexpr std::uint32_t oldestBuild = 17763;

} // namespace

std::optional<WindowsVersion> windowsVersion() {
    // GetVersionEx answers what the manifest allows, this function what is there.
    const HMODULE ntdll = GetModuleHandleA("ntdll.dll");
    const auto getVersion =
        reinterpret_cast<RtlGetVersion>(reinterpret_cast<void*>(GetProcAddress(ntdll, "RtlGetVersion")));
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (getVersion == nullptr || getVersion(&version) != 0) {
        return std::nullopt;
    }
    return WindowsVersion{version.dwMajorVersion, version.dwMinorVersion, version.dwBuildNumber};
}

std::string windowsVersionNotice(const WindowsVersion& version) {
    if (std::pair(version.major, version.build) >= std::pair(oldestMajor, oldestBuild)) {
        return {};
    }
    return "This Windows is older than Windows 10, version 1809, so the bridge may not work. Update Windows";
}
