#include "companion/setup/child_process.h"

#include "companion/setup/line_splitter.h"

#include <windows.h>

#include <array>
#include <atomic>
#include <string_view>
#include <system_error>
#include <thread>

namespace {

/// Room for what a bridge logs between two looks at its output, so that it never waits.
constexpr DWORD pipeBytes = 256 * 1024;

/// Both ends of a pipe, of which the child gets one.
struct PipeEnds {
    HANDLE read = nullptr;
    HANDLE write = nullptr;

    explicit PipeEnds(bool childReads) {
        SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        CreatePipe(&read, &write, &inherited, pipeBytes);
        SetHandleInformation(childReads ? write : read, HANDLE_FLAG_INHERIT, 0);
    }
};

class WindowsChild : public ChildProcess {
public:
    WindowsChild(HANDLE process, HANDLE input, HANDLE output, LineCallback onLine)
        : process(process),
          input(input),
          output(output),
          reader([this, lines = LineSplitter(std::move(onLine))] { readOutput(lines); }) {}

    ~WindowsChild() override {
        CloseHandle(input);
        reader.join();
        CloseHandle(output);
        CloseHandle(process);
    }

    bool running() const override { return !ended; }

    void write(const std::string& text) override {
        DWORD written = 0;
        if (running()) {
            WriteFile(input, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        }
    }

private:
    const HANDLE process;
    const HANDLE input;
    const HANDLE output;
    std::atomic<bool> ended{false};
    std::thread reader;

    /// Until the process ends: the output may stay open after that, since programs that it has started can have it too.
    void readOutput(LineSplitter lines) {
        constexpr DWORD pauseMs = 50;
        bool hasEnded = false;
        while (!hasEnded) {
            hasEnded = WaitForSingleObject(process, pauseMs) == WAIT_OBJECT_0;
            readAvailable(lines);
        }
        lines.end();
        ended = true;
    }

    void readAvailable(LineSplitter& lines) const {
        std::array<char, 4096> piece{};
        DWORD available = 0;
        DWORD size = 0;
        while (PeekNamedPipe(output, nullptr, 0, nullptr, &available, nullptr) != 0 && available > 0 &&
               ReadFile(output, piece.data(), static_cast<DWORD>(piece.size()), &size, nullptr) != 0) {
            lines.add(std::string_view(piece.data(), size));
        }
    }
};

/// Arguments that hold paths: no such path ends with a backslash or holds a quote.
std::string commandLineOf(const std::string& program, const std::vector<std::string>& arguments) {
    std::string line = '"' + program + '"';
    for (const std::string& argument : arguments) {
        line += " \"" + argument + '"';
    }
    return line;
}

} // namespace

std::unique_ptr<ChildProcess> ChildProcess::start(const std::string& program, const std::vector<std::string>& arguments,
                                                  LineCallback onLine, std::string& error) {
    const PipeEnds input(true);
    const PipeEnds output(false);
    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.read;
    startup.hStdOutput = output.write;
    startup.hStdError = output.write;
    PROCESS_INFORMATION process{};
    std::string line = commandLineOf(program, arguments);
    const bool started = CreateProcessA(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                        &startup, &process) != 0;
    const DWORD failure = GetLastError();
    CloseHandle(input.read);
    CloseHandle(output.write);
    if (!started) {
        CloseHandle(input.write);
        CloseHandle(output.read);
        error = std::system_category().message(static_cast<int>(failure));
        return nullptr;
    }
    CloseHandle(process.hThread);
    return std::make_unique<WindowsChild>(process.hProcess, input.write, output.read, std::move(onLine));
}
