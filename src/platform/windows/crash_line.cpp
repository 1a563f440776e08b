#include "platform/crash_line.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

// A crashed process reads nothing else. Written once, before the filter is installed.
std::array<wchar_t, 1024> crashFile{};
std::array<char, 64> crashedProgram{};
std::array<char, 64> crashedVersion{};
std::uint64_t crashProgramStart = 0;
std::uint64_t crashProgramSize = 0;

void appendCrashLine(std::string_view kind, std::uint64_t code, std::uint64_t address) {
    std::array<char, 256> line{};
    const std::size_t length = writeCrashLine({.program = crashedProgram.data(),
                                               .version = crashedVersion.data(),
                                               .kind = kind,
                                               .code = code,
                                               .address = address,
                                               .programStart = crashProgramStart,
                                               .programSize = crashProgramSize},
                                              line);
    const HANDLE file = CreateFileW(crashFile.data(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        DWORD written = 0;
        WriteFile(file, line.data(), static_cast<DWORD>(length), &written, nullptr);
        CloseHandle(file);
    }
}

LONG WINAPI filterException(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    appendCrashLine("exception", record.ExceptionCode, reinterpret_cast<std::uintptr_t>(record.ExceptionAddress));
    // Windows may still write its own report.
    return EXCEPTION_CONTINUE_SEARCH;
}

// Uncaught C++ exceptions and failed assertions end here, past the filter. Where they came from isn't known any more.
void handleAbort(int signal) {
    appendCrashLine("signal", static_cast<std::uint64_t>(signal), 0);
}

// The loader's lock may be held in a crash, so this is found out before.
void findProgram() {
    const auto* start = reinterpret_cast<const std::byte*>(GetModuleHandleW(nullptr));
    const auto& dosHeader = *reinterpret_cast<const IMAGE_DOS_HEADER*>(start);
    const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS*>(start + dosHeader.e_lfanew);
    crashProgramStart = reinterpret_cast<std::uintptr_t>(start);
    crashProgramSize = headers.OptionalHeader.SizeOfImage;
}

void keepText(std::string_view text, std::array<char, 64>& room) {
    std::copy_n(text.begin(), std::min(text.size(), room.size() - 1), room.begin());
}

} // namespace

void installCrashLine(const std::string& path, std::string_view program, std::string_view version) {
    MultiByteToWideChar(CP_ACP, 0, path.c_str(), -1, crashFile.data(), static_cast<int>(crashFile.size()));
    keepText(program, crashedProgram);
    keepText(version, crashedVersion);
    findProgram();
    ULONG reservedStack = 65536;
    SetThreadStackGuarantee(&reservedStack);
    SetUnhandledExceptionFilter(filterException);
    std::signal(SIGABRT, handleAbort);
}
