#include "simulation/rig/console_streams.h"

#include <iostream>
#include <utility>

ConsoleStreams::ConsoleStreams() {
    std::cin.clear();
    processInput = std::cin.rdbuf(&keyboard);
    processOutput = std::cout.rdbuf(&nowhere);
}

ConsoleStreams::~ConsoleStreams() {
    std::cin.rdbuf(processInput);
    std::cin.clear();
    std::cout.rdbuf(processOutput);
}

void ConsoleStreams::type(const std::string& line) {
    keyboard.add(line + '\n');
}

void ConsoleStreams::end() {
    keyboard.close();
}

void ConsoleStreams::Keyboard::add(const std::string& text) {
    const std::lock_guard lock(mutex);
    typed.push_back(text);
    changed.notify_all();
}

void ConsoleStreams::Keyboard::close() {
    const std::lock_guard lock(mutex);
    closed = true;
    changed.notify_all();
}

ConsoleStreams::Keyboard::int_type ConsoleStreams::Keyboard::underflow() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return closed || !typed.empty(); });
    if (typed.empty()) {
        return traits_type::eof();
    }
    current = std::exchange(typed.front(), {});
    typed.pop_front();
    setg(current.data(), current.data(), current.data() + current.size());
    return traits_type::to_int_type(current.front());
}
