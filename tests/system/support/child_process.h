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
#include <vector>

struct ChildProcessSettings {
    /// The program's path, then its arguments. The path is also what others see as the program's name.
    std::vector<std::string> command;
    std::string workingFolder = "/";
    /// Added to this process's own, each as "NAME=value".
    std::vector<std::string> environment = {};
    /// Nobody reads its standard output, as after `| head -n 0`.
    bool closeOutput = false;
};

/// A program started by a test, with pipes at its three streams. Ended at the latest by the destructor.
class ChildProcess {
public:
    /// Generous: an emulated machine that others use too, and in it perhaps Wine.
    static constexpr std::chrono::seconds defaultLimit{90};

    /// A program that can't be started ends with code 127.
    explicit ChildProcess(const ChildProcessSettings& settings);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Writes a line to its standard input.
    void writeLine(std::string_view line) const;
    void closeInput();
    void sendSignal(int number);

    /// Its exit code, or 128 and the number of the signal that ended it; none when it still runs after the limit.
    std::optional<int> waitForExit();
    bool running();

    /// All it has written until now.
    std::string output();
    std::string errorOutput();

    /// Waits until what it has written to its standard output satisfies `condition`; false after the limit, or
    /// when it writes no more.
    bool waitForOutput(const std::function<bool(const std::string& output)>& condition);

private:
    void collect();
    bool collectFrom(int stream, std::string& target);

    pid_t process = -1;
    int input = -1;
    int outputStream = -1;
    int errorStream = -1;
    std::optional<int> exitCode;
    std::thread collector;
    std::atomic<bool> collected{false};
    std::atomic<bool> abandoned{false};
    // Guards the two texts.
    std::mutex mutex;
    std::condition_variable grown;
    std::string outputText;
    std::string errorText;
};
