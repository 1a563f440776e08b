// Systems whose pipes don't reach a simulator: a simulator runs in a Windows of its own, whose pipes end there.

#include "wire/pipe.h"

#include <utility>

struct Pipe::Native {};

Pipe::Pipe() = default;
Pipe::Pipe(std::unique_ptr<Native> opened) : native(std::move(opened)) {}
Pipe::~Pipe() = default;
Pipe::Pipe(Pipe&& other) noexcept = default;
Pipe& Pipe::operator=(Pipe&& other) noexcept = default;

Transfer Pipe::send(std::span<const std::uint8_t> /*bytes*/) {
    return {};
}

Transfer Pipe::receive(std::span<std::uint8_t> /*bytes*/) {
    return {};
}

void Pipe::awaitData(std::chrono::milliseconds /*limit*/) {}

void Pipe::close() {
    native.reset();
}

PipeListener::PipeListener(std::string pipeName, int receiveBufferBytes)
    : name(std::move(pipeName)), receiveBuffer(receiveBufferBytes) {}

bool PipeListener::listen(std::string& error) {
    error = "Failed to listen on pipe " + name + ": this system has no such pipes";
    return false;
}

Pipe PipeListener::accept() {
    return {};
}

bool havePipes() {
    return false;
}

Pipe connectPipe(const std::string& /*host*/, const std::string& /*name*/, std::chrono::milliseconds /*limit*/) {
    return {};
}
