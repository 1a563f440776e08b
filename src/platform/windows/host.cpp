#include "platform/portable_host.h"
#include "platform/system_parts.h"
#include "platform/windows/console.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_version.h"

#include <shlobj.h>
#include <tlhelp32.h>
#include <windows.h>

#include <array>
#include <optional>

namespace {

bool findProcess(const std::function<bool(std::string_view name)>& visit) {
    const HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (processes == INVALID_HANDLE_VALUE) {
        return false;
    }
    PROCESSENTRY32W entry{};
    static_assert(sizeof entry == 568);
    entry.dwSize = sizeof entry;
    bool found = false;
    for (BOOL more = Process32FirstW(processes, &entry); more && !found; more = Process32NextW(processes, &entry)) {
        found = visit(utf8FromWide(entry.szExeFile));
    }
    CloseHandle(processes);
    return found;
}

std::string executablePath() {
    std::array<char, MAX_PATH> path{};
    const DWORD size = GetModuleFileNameA(nullptr, path.data(), MAX_PATH);
    return size == MAX_PATH ? std::string() : std::string(path.data(), size);
}

std::string commonDataFolder() {
    std::array<char, MAX_PATH> path{};
    const HRESULT result = SHGetFolderPathA(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, path.data());
    return result < 0 ? std::string() : std::string(path.data());
}

SingleInstance acquireSingleInstance(const std::string& name) {
    // Never closed: the end of the process does that.
    if (CreateMutexA(nullptr, TRUE, name.c_str()) == nullptr) {
        return SingleInstance::Unavailable;
    }
    return GetLastError() == ERROR_ALREADY_EXISTS ? SingleInstance::AlreadyRunning : SingleInstance::Acquired;
}

std::string systemNotice() {
    const std::optional<WindowsVersion> version = windowsVersion();
    return version ? windowsVersionNotice(*version) : std::string();
}

} // namespace

Host systemHost() {
    Host host = portableHost();
    host.findProcess = findProcess;
    host.executablePath = executablePath;
    host.commonDataFolder = commonDataFolder;
    host.acquireSingleInstance = acquireSingleInstance;
    host.attachConsole = attachToParentConsole;
    host.installControlHandler = installConsoleHandler;
    host.systemNotice = systemNotice;
    return host;
}
