#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// A program that this one has started, with its standard streams. Any thread.
class ChildProcess {
public:
    /// Gets each line that the program prints, without its end, on a thread of the process's own.
    using LineCallback = std::function<void(const std::string& line)>;

    /// Null with the system's reason in `error` when the program can't be started.
    static std::unique_ptr<ChildProcess> start(const std::string& program, const std::vector<std::string>& arguments,
                                               LineCallback onLine, std::string& error);
    /// Closes the program's input and waits for its end.
    virtual ~ChildProcess() = default;

    virtual bool running() const = 0;
    /// Sends text to the program's input. Ignored once it has ended.
    virtual void write(const std::string& text) = 0;
};
