#pragma once

#include "wire/pipe.h"

#include <memory>
#include <string>

/// Listens on a local pipe for any number of clients. Not synchronised. On a system without such pipes listening always
/// fails.
class PipeListener {
public:
    PipeListener() = default;
    /// `name` is without "\\.\pipe\". A receive buffer of 0 is 64 KiB.
    PipeListener(std::string name, int receiveBufferBytes);

    bool valid() const { return waiting.valid(); }
    /// False with the reason in `error`, also when another program listens there. Once it has succeeded, the pipe can
    /// be closed and listen again while earlier clients are still connected.
    bool listen(std::string& error);
    /// The next client, or none. Then listens for another one; when it can't, it is closed.
    Pipe accept();
    void close() { waiting.close(); }

private:
    /// Null with the reason in `error`.
    std::unique_ptr<NativePipe> makeInstance(std::string& error) const;

    std::string name;
    int receiveBufferBytes = 0;
    /// `listen` has succeeded, so this object may create further instances of the pipe.
    bool owned = false;
    /// The instance for the next client, and the system's side of it.
    Pipe waiting;
    NativePipe* instance = nullptr;
};
