#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <streambuf>
#include <string>

/// Replaces the process's standard input and output while a bridge runs in console mode: `type` provides the user's
/// input, and the log's echo is discarded.
class ConsoleStreams {
public:
    ConsoleStreams();
    /// Restores the process's own streams. No thread may still be reading.
    ~ConsoleStreams();
    ConsoleStreams(const ConsoleStreams&) = delete;
    ConsoleStreams& operator=(const ConsoleStreams&) = delete;

    /// Any thread.
    void type(const std::string& line);
    /// Ends the input, so a reader returns. Any thread.
    void end();

private:
    class Keyboard : public std::streambuf {
    public:
        void add(const std::string& text);
        void close();

    protected:
        int_type underflow() override;

    private:
        // Guards `typed` and `closed`.
        std::mutex mutex;
        std::condition_variable changed;
        std::deque<std::string> typed;
        bool closed = false;
        // The reader's alone.
        std::string current;
    };

    class Nowhere : public std::streambuf {
    protected:
        int_type overflow(int_type letter) override { return traits_type::not_eof(letter); }
        std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
    };

    Keyboard keyboard;
    Nowhere nowhere;
    std::streambuf* processInput;
    std::streambuf* processOutput;
};
