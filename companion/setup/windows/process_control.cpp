#include "companion/setup/process_control.h"

#include "companion/doctor/bridge_program.h"
#include "platform/windows/wide_text.h"

#include <tlhelp32.h>
#include <windows.h>

#include <optional>
#include <system_error>

namespace {

/// When it was started, in the system's ticks; none if that can't be had.
std::optional<std::uint64_t> startOf(std::int64_t id) {
    const HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(id));
    FILETIME start{};
    FILETIME other{};
    const bool isKnown = process != nullptr && GetProcessTimes(process, &start, &other, &other, &other) != 0;
    CloseHandle(process);
    return isKnown ? std::optional((std::uint64_t{start.dwHighDateTime} << 32U) | start.dwLowDateTime) : std::nullopt;
}

/// The system gives a process's number to another one once it has ended, so a parent that is younger isn't one. Only
/// the bridge's is asked for, since this opens both processes.
void dropFalseParent(ProcessFacts& process) {
    const std::optional<std::uint64_t> start = startOf(process.id);
    const std::optional<std::uint64_t> parentStart = startOf(process.parent);
    process.parent = start && parentStart && *parentStart <= *start ? process.parent : 0;
}

std::vector<ProcessFacts> listProcesses() {
    std::vector<ProcessFacts> processes;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot, &entry); more != 0; more = Process32NextW(snapshot, &entry)) {
        processes.push_back({entry.th32ProcessID, entry.th32ParentProcessID, utf8FromWide(entry.szExeFile)});
    }
    CloseHandle(snapshot);
    for (ProcessFacts& process : processes) {
        if (isBridgeProcess(process.name)) {
            dropFalseParent(process);
        }
    }
    return processes;
}

std::string endAtOnce(std::int64_t id) {
    const HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, static_cast<DWORD>(id));
    const bool ended = process != nullptr && TerminateProcess(process, 1) != 0;
    const DWORD failure = GetLastError();
    CloseHandle(process);
    return ended ? "" : std::system_category().message(static_cast<int>(failure));
}

} // namespace

ProcessControl systemProcesses() {
    return {listProcesses, endAtOnce,
            "Windows ends its process at once: a bridge without a console can't be asked to end."};
}
