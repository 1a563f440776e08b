#include "tests/system/support/child_process.h"

#include "tests/support/wait_until.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace {

struct Pipe {
    int readEnd = -1;
    int writeEnd = -1;
};

Pipe makePipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    return {ends[0], ends[1]};
}

std::vector<std::string> environmentWith(const std::vector<std::pair<std::string, std::string>>& additions) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const std::string name = text.substr(0, text.find('='));
        if (std::none_of(additions.begin(), additions.end(), [&](const auto& pair) { return pair.first == name; })) {
            result.push_back(text);
        }
    }
    for (const auto& [name, value] : additions) {
        result.push_back(std::string(name).append("=").append(value));
    }
    return result;
}

/// A program that ends while it is written to must not end the tests; the program itself starts with the signal as
/// usual.
void ignoreBrokenPipes() {
    std::signal(SIGPIPE, SIG_IGN);
}

void restoreBrokenPipes(posix_spawnattr_t& attributes) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

ChildProcess::ChildProcess(const ChildProcessSettings& settings) {
    ignoreBrokenPipes();
    const Pipe in = makePipe();
    const Pipe out = makePipe();
    const Pipe error = makePipe();
    input = in.writeEnd;
    outputStream = out.readEnd;
    errorStream = error.readEnd;
    const int result = spawn(settings, in.readEnd, out.writeEnd, error.writeEnd);
    for (const int given : {in.readEnd, out.writeEnd, error.writeEnd}) {
        close(given);
    }
    if (result != 0) {
        for (const int own : {input, outputStream, errorStream}) {
            close(own);
        }
        throw std::system_error(result, std::generic_category(), settings.command.front());
    }
    collector = std::thread([this, closes = settings.closeOutputAfterLine] { collect(closes); });
}

int ChildProcess::spawn(const ChildProcessSettings& settings, int in, int out, int error) {
    std::vector<std::string> command = settings.command;
    std::vector<std::string> environment = environmentWith(settings.environment);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO);
    if (!settings.workingFolder.empty()) {
        posix_spawn_file_actions_addchdir_np(&actions, settings.workingFolder.c_str());
    }
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    restoreBrokenPipes(attributes);
    const int result = posix_spawn(&process, command.front().c_str(), &actions, &attributes, pointersTo(command).data(),
                                   pointersTo(environment).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return result;
}

ChildProcess::~ChildProcess() {
    if (running()) {
        kill(process, SIGKILL);
        waitForExit();
    }
    closeInput();
    collector.join();
    close(outputStream);
    close(errorStream);
}

void ChildProcess::writeLine(std::string_view line) {
    const std::string text = std::string(line) + "\n";
    if (write(input, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::system_error(errno, std::generic_category(), "write to a program's input");
    }
}

void ChildProcess::closeInput() {
    if (input >= 0) {
        close(input);
    }
    input = -1;
}

void ChildProcess::sendSignal(int number) {
    // A process that has been reaped has given its id away.
    if (running()) {
        kill(process, number);
    }
}

std::optional<int> ChildProcess::waitForExit(std::chrono::milliseconds limit) {
    // With its end all that it wrote is here, too.
    if (waitUntil([this] { return !running(); }, limit)) {
        waitUntil([this] { return collected.load(); });
    }
    return exitCode;
}

bool ChildProcess::running() {
    if (!exitCode) {
        reap();
    }
    return !exitCode;
}

void ChildProcess::reap() {
    int status = 0;
    if (waitpid(process, &status, WNOHANG) != process) {
        return;
    }
    exitCode = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

std::string ChildProcess::output() {
    const std::lock_guard lock(mutex);
    return outputText;
}

std::string ChildProcess::errorOutput() {
    const std::lock_guard lock(mutex);
    return errorText;
}

bool ChildProcess::waitForOutput(const std::function<bool(const std::string& output)>& condition,
                                 std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex);
    return grown.wait_for(lock, limit, [&] { return condition(outputText); });
}

void ChildProcess::collect(bool closeOutputAfterLine) {
    std::array<pollfd, 2> waits{pollfd{outputStream, POLLIN, 0}, pollfd{errorStream, POLLIN, 0}};
    // A negative descriptor is one that poll passes over.
    while (waits[0].fd >= 0 || waits[1].fd >= 0) {
        if (poll(waits.data(), waits.size(), -1) < 0) {
            continue;
        }
        if (waits[0].revents != 0 && !collectFrom(outputStream, outputText)) {
            waits[0].fd = -1;
        }
        if (closeOutputAfterLine && waits[0].fd >= 0 && outputText.find('\n') != std::string::npos) {
            close(outputStream);
            outputStream = waits[0].fd = -1;
        }
        if (waits[1].revents != 0 && !collectFrom(errorStream, errorText)) {
            waits[1].fd = -1;
        }
    }
    collected = true;
}

bool ChildProcess::collectFrom(int stream, std::string& target) {
    std::array<char, 4096> buffer{};
    const ssize_t count = read(stream, buffer.data(), buffer.size());
    if (count <= 0) {
        return false;
    }
    const std::lock_guard lock(mutex);
    target.append(buffer.data(), static_cast<std::size_t>(count));
    grown.notify_all();
    return true;
}
