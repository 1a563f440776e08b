#include "platform/crash_line.h"

#include <fcntl.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// The linker's marks at the program's ends.
extern "C" const char __ehdr_start; // NOLINT(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" const char _end;         // NOLINT(bugprone-reserved-identifier,readability-identifier-naming)

namespace {

// A signal handler reaches nothing else. Written once, before it is installed.
std::array<char, 4096> crashFile{};
std::array<char, 64> crashedProgram{};
std::array<char, 64> crashedVersion{};
std::array<char, 65536> crashStack{};

std::uint64_t asNumber(const void* address) {
    return reinterpret_cast<std::uintptr_t>(address);
}

CrashFacts factsOfSignal(int signal, const ucontext_t& context) {
    return {.program = crashedProgram.data(),
            .version = crashedVersion.data(),
            .kind = "signal",
            .code = static_cast<std::uint64_t>(signal),
            .address = static_cast<std::uint64_t>(context.uc_mcontext.gregs[REG_RIP]),
            .programStart = asNumber(&__ehdr_start),
            .programSize = asNumber(&_end) - asNumber(&__ehdr_start)};
}

void appendToCrashFile(std::span<const char> line) {
    const int file = open(crashFile.data(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (file >= 0) {
        [[maybe_unused]] const auto written = write(file, line.data(), line.size());
        close(file);
    }
}

// Calls only what POSIX allows in a signal handler. The signal's own action is back by then, and ends the process.
void handleCrash(int signal, siginfo_t* /*information*/, void* context) {
    const int savedError = errno;
    std::array<char, 256> line{};
    const std::size_t length = writeCrashLine(factsOfSignal(signal, *static_cast<ucontext_t*>(context)), line);
    appendToCrashFile({line.data(), length});
    errno = savedError;
    raise(signal);
}

template <std::size_t size>
void keepText(std::string_view text, std::array<char, size>& room) {
    std::copy_n(text.begin(), std::min(text.size(), size - 1), room.begin());
}

} // namespace

void installCrashLine(const std::string& path, std::string_view program, std::string_view version) {
    keepText(path, crashFile);
    keepText(program, crashedProgram);
    keepText(version, crashedVersion);
    stack_t stack{};
    stack.ss_sp = crashStack.data();
    stack.ss_size = crashStack.size();
    sigaltstack(&stack, nullptr);
    struct sigaction action {};
    action.sa_sigaction = handleCrash;
    action.sa_flags = static_cast<int>(SA_SIGINFO | SA_ONSTACK | SA_RESETHAND);
    for (const int signal : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT}) {
        sigaction(signal, &action, nullptr);
    }
}
