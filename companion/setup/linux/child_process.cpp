#include "companion/setup/child_process.h"

#include "companion/setup/line_splitter.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <string_view>
#include <system_error>
#include <thread>

namespace {

/// Both ends of a pipe. The child inherits neither, only what it is given as a stream.
struct PipeEnds {
    int read = -1;
    int write = -1;

    PipeEnds() {
        std::array<int, 2> ends{-1, -1};
        if (pipe2(ends.data(), O_CLOEXEC) == 0) {
            read = ends[0];
            write = ends[1];
        }
    }
};

class LinuxChild : public ChildProcess {
public:
    LinuxChild(pid_t process, int input, int output, LineCallback onLine)
        : process(process),
          input(input),
          output(output),
          reader([this, lines = LineSplitter(std::move(onLine))] { readOutput(lines); }) {}

    ~LinuxChild() override {
        close(input);
        reader.join();
        close(output);
    }

    bool running() const override { return !ended; }

    void write(const std::string& text) override {
        if (running()) {
            // The program reads a line now and then; a pipe takes far more than one.
            [[maybe_unused]] const auto written = ::write(input, text.data(), text.size());
        }
    }

private:
    const pid_t process;
    const int input;
    const int output;
    std::atomic<bool> ended{false};
    std::thread reader;

    void readOutput(LineSplitter lines) {
        std::array<char, 4096> piece{};
        for (auto size = read(output, piece.data(), piece.size()); size > 0;
             size = read(output, piece.data(), piece.size())) {
            lines.add(std::string_view(piece.data(), static_cast<std::size_t>(size)));
        }
        lines.end();
        waitpid(process, nullptr, 0);
        ended = true;
    }
};

int spawn(pid_t& process, const std::string& program, const std::vector<std::string>& arguments, const PipeEnds& input,
          const PipeEnds& output) {
    std::vector<char*> words{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input.read, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output.write, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output.write, STDERR_FILENO);
    const int failure = posix_spawn(&process, program.c_str(), &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return failure;
}

} // namespace

std::unique_ptr<ChildProcess> ChildProcess::start(const std::string& program, const std::vector<std::string>& arguments,
                                                  LineCallback onLine, std::string& error) {
    const PipeEnds input;
    const PipeEnds output;
    pid_t process = 0;
    const int failure = spawn(process, program, arguments, input, output);
    close(input.read);
    close(output.write);
    if (failure != 0) {
        close(input.write);
        close(output.read);
        error = std::generic_category().message(failure);
        return nullptr;
    }
    return std::make_unique<LinuxChild>(process, input.write, output.read, std::move(onLine));
}
