// A simulator's pipes exist only in the Windows that it runs in.

#include "simulation/simulator/pipe_listener.h"

#include <utility>

PipeListener::PipeListener(std::string name, int receiveBufferBytes)
    : name(std::move(name)), receiveBufferBytes(receiveBufferBytes) {}

bool PipeListener::listen(std::string& error) {
    error = "Failed to listen on pipe " + name + ": this system has no such pipes";
    return false;
}

Pipe PipeListener::accept() {
    return {};
}
