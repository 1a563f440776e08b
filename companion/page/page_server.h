#pragma once

#include "companion/page/page.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

/// Answers the browsers of this machine alone, on threads of its own. This and its threads are all that meets the HTTP
/// library.
class PageServer {
public:
    /// The handler is called on any of the server's threads. Requests with a body of more bytes don't reach it.
    PageServer(PageHandler handler, std::size_t longestBody);
    /// Stops.
    ~PageServer();
    PageServer(const PageServer&) = delete;
    PageServer& operator=(const PageServer&) = delete;

    /// Takes a port of 127.0.0.1: the wanted one, with 0 any free one, and without one the first free of the usual.
    /// False when there is none.
    bool bind(std::optional<std::uint16_t> wanted);
    std::uint16_t port() const;
    /// After `bind`, once.
    void start();
    /// Streams must end by themselves. Idempotent.
    void stop();

private:
    class Impl;
    std::unique_ptr<Impl> impl;
};
