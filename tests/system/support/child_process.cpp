#include "tests/system/support/child_process.h"

#include "tests/support/wait_until.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace {

struct Pipe {
    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::system_error(errno, std::generic_category(), "pipe");
        }
        readEnd = ends[0];
        writeEnd = ends[1];
    }

    int readEnd;
    int writeEnd;
};

/// env prepares the process and then becomes the program. This process ignores broken pipes, which is inherited.
std::vector<std::string> commandLineOf(const ChildProcessSettings& settings) {
    std::vector<std::string> words{"/usr/bin/env", "--default-signal=PIPE", "--chdir=" + settings.workingFolder};
    words.insert(words.end(), settings.environment.begin(), settings.environment.end());
    words.insert(words.end(), settings.command.begin(), settings.command.end());
    return words;
}

pid_t spawn(std::vector<std::string> words, const std::array<int, 3>& streams) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int number = 0; number < 3; ++number) {
        posix_spawn_file_actions_adddup2(&actions, streams[static_cast<std::size_t>(number)], number);
    }
    pid_t process = -1;
    const int error = posix_spawn(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), words[0]);
    }
    return process;
}

} // namespace

ChildProcess::ChildProcess(const ChildProcessSettings& settings) {
    // A program that ends while it is written to must not end the tests.
    std::signal(SIGPIPE, SIG_IGN);
    const Pipe in;
    const Pipe out;
    const Pipe error;
    process = spawn(commandLineOf(settings), {in.readEnd, out.writeEnd, error.writeEnd});
    for (const int given : {in.readEnd, out.writeEnd, error.writeEnd}) {
        close(given);
    }
    input = in.writeEnd;
    errorStream = error.readEnd;
    if (settings.closeOutput) {
        close(out.readEnd);
    } else {
        outputStream = out.readEnd;
    }
    collector = std::thread([this] { collect(); });
}

ChildProcess::~ChildProcess() {
    sendSignal(SIGKILL);
    waitUntil([this] { return !running(); }, defaultLimit);
    closeInput();
    // Programs that it has started itself, such as Wine's desktop, may hold its pipes open for as long as they like.
    abandoned = true;
    collector.join();
    close(outputStream);
    close(errorStream);
}

void ChildProcess::writeLine(std::string_view line) const {
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

std::optional<int> ChildProcess::waitForExit() {
    // With its end all that it wrote is here, too.
    if (waitUntil([this] { return !running(); }, defaultLimit)) {
        waitUntil([this] { return collected.load(); });
    }
    return exitCode;
}

bool ChildProcess::running() {
    int status = 0;
    if (!exitCode && waitpid(process, &status, WNOHANG) == process) {
        exitCode = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
    return !exitCode;
}

std::string ChildProcess::output() {
    const std::lock_guard lock(mutex);
    return outputText;
}

std::string ChildProcess::errorOutput() {
    const std::lock_guard lock(mutex);
    return errorText;
}

bool ChildProcess::waitForOutput(const std::function<bool(const std::string& output)>& condition) {
    std::unique_lock lock(mutex);
    grown.wait_for(lock, defaultLimit, [&] { return condition(outputText) || collected; });
    return condition(outputText);
}

void ChildProcess::collect() {
    // A negative descriptor is one that poll passes over.
    std::array<pollfd, 2> waits{pollfd{outputStream, POLLIN, 0}, pollfd{errorStream, POLLIN, 0}};
    while (!abandoned && (waits[0].fd >= 0 || waits[1].fd >= 0)) {
        constexpr int pauseMs = 100;
        if (poll(waits.data(), waits.size(), pauseMs) <= 0) {
            continue;
        }
        if (waits[0].revents != 0 && !collectFrom(outputStream, outputText)) {
            waits[0].fd = -1;
        }
        if (waits[1].revents != 0 && !collectFrom(errorStream, errorText)) {
            waits[1].fd = -1;
        }
    }
    {
        const std::lock_guard lock(mutex);
        collected = true;
    }
    grown.notify_all();
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
