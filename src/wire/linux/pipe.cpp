// A simulator's pipes exist only in the Windows that it runs in, so no pipe reaches it from here.

#include "wire/pipe.h"

#include <utility>

class NativePipe {};

Pipe::Pipe() = default;
Pipe::Pipe(std::unique_ptr<NativePipe> native) : native(std::move(native)) {}
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

bool havePipes() {
    return false;
}

Pipe connectPipe(const std::string& /*host*/, const std::string& /*name*/, std::chrono::milliseconds /*limit*/) {
    return {};
}
