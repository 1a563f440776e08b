#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

struct ChildProcessSettings {
    /// The program's path, then its arguments. The path is also what others see as the program's name.
    std::vector<std::string> command;
    std::string workingFolder;
    /// Set beside, or over, what this process has.
    std::vector<std::pair<std::string, std::string>> environment;
    /// Close the pipe at its standard output once a line has come, as `head -n 1` does.
    bool closeOutputAfterLine = false;
};

/// A program started by a test, with pipes at its three streams. Ended at the latest by the destructor.
class ChildProcess {
public:
    /// Generous: an emulated machine that others use too, and in it perhaps Wine.
    static constexpr std::chrono::seconds defaultLimit{90};

    /// Throws std::system_error when the program can't be started.
    explicit ChildProcess(const ChildProcessSettings& settings);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t id() const { return process; }

    /// Writes a line to its standard input.
    void writeLine(std::string_view line);
    void closeInput();
    void sendSignal(int number);

    /// Its exit code, or 128 and the number of the signal that ended it; none when it still runs at the limit.
    std::optional<int> waitForExit(std::chrono::milliseconds limit = defaultLimit);
    bool running();

    /// All it has written until now.
    std::string output();
    std::string errorOutput();

    /// Waits until what it has written to its standard output satisfies `condition`; false at the limit.
    bool waitForOutput(const std::function<bool(const std::string& output)>& condition,
                       std::chrono::milliseconds limit = defaultLimit);

private:
    int spawn(const ChildProcessSettings& settings, int in, int out, int error);
    void collect(bool closeOutputAfterLine);
    bool collectFrom(int stream, std::string& target);
    void reap();

    pid_t process = -1;
    int input = -1;
    int outputStream = -1;
    int errorStream = -1;
    std::optional<int> exitCode;
    std::thread collector;
    std::atomic<bool> collected{false};
    // Guards the two texts.
    std::mutex mutex;
    std::condition_variable grown;
    std::string outputText;
    std::string errorText;
};
