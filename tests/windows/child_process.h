#pragma once

#include "platform/file_system.h"

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

/// As this program's first argument: start the rest of the command line, and end as it ends.
constexpr std::string_view startRestOption = "--start-rest";

/// The standard streams that a process is started with. Null is none, as a windowed program has when a command prompt
/// starts it.
struct Streams {
    HANDLE input = nullptr;
    HANDLE output = nullptr;
    HANDLE error = nullptr;
};

/// This process's own.
inline Streams ownStreams() {
    return {GetStdHandle(STD_INPUT_HANDLE), GetStdHandle(STD_OUTPUT_HANDLE), GetStdHandle(STD_ERROR_HANDLE)};
}

/// One process, ended with this object at the latest.
class ChildProcess {
public:
    explicit ChildProcess(std::wstring commandLine, const Streams& streams = {}, DWORD flags = 0,
                          const std::wstring& workingFolder = L"") {
        STARTUPINFOW start{};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdInput = streams.input;
        start.hStdOutput = streams.output;
        start.hStdError = streams.error;
        for (const HANDLE stream : {streams.input, streams.output, streams.error}) {
            if (stream != nullptr) {
                SetHandleInformation(stream, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
            }
        }
        PROCESS_INFORMATION started{};
        if (CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, flags, nullptr,
                           workingFolder.empty() ? nullptr : workingFolder.c_str(), &start, &started)) {
            CloseHandle(started.hThread);
            process = started.hProcess;
        }
    }
    /// With a command line in the system's code page.
    explicit ChildProcess(const std::string& commandLine, const Streams& streams = {}, DWORD flags = 0,
                          const std::string& workingFolder = "")
        : ChildProcess(FileSystem::fromBytes(commandLine).wstring(), streams, flags,
                       FileSystem::fromBytes(workingFolder).wstring()) {}
    ~ChildProcess() {
        if (process != nullptr) {
            TerminateProcess(process, 99);
            WaitForSingleObject(process, INFINITE);
            CloseHandle(process);
        }
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool isRunning() const { return process != nullptr && WaitForSingleObject(process, 0) == WAIT_TIMEOUT; }

    /// Waits for the end. 1000 when there is none within the limit, or the process couldn't be started.
    DWORD exitCode(DWORD limitMs = 60000) const {
        DWORD code = 1000;
        if (process != nullptr && WaitForSingleObject(process, limitMs) == WAIT_OBJECT_0) {
            GetExitCodeProcess(process, &code);
        }
        return code;
    }

private:
    HANDLE process = nullptr;
};

/// A pipe whose one end a child process gets.
class ChildPipe {
public:
    ChildPipe() {
        constexpr DWORD roomForAllOutput = 65536;
        CreatePipe(&readEnd, &writeEnd, nullptr, roomForAllOutput);
    }
    ~ChildPipe() {
        closeWriteEnd();
        CloseHandle(readEnd);
    }
    ChildPipe(const ChildPipe&) = delete;
    ChildPipe& operator=(const ChildPipe&) = delete;

    void write(std::string_view text) const {
        DWORD count = 0;
        WriteFile(writeEnd, text.data(), static_cast<DWORD>(text.size()), &count, nullptr);
    }

    void closeWriteEnd() {
        if (writeEnd != nullptr) {
            CloseHandle(writeEnd);
        }
        writeEnd = nullptr;
    }

    /// All that was written, once no process holds the write end any more.
    std::string readAll() {
        closeWriteEnd();
        std::string text;
        char bytes[4096];
        for (DWORD count = 0; ReadFile(readEnd, bytes, sizeof bytes, &count, nullptr) && count > 0;) {
            text.append(bytes, count);
        }
        return text;
    }

    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
};
