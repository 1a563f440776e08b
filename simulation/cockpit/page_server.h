#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

// The HTTP server of the page. This header contains no container of the standard library: the HTTP library and the one
// source that uses it are always built without checked containers, also when the rest is built with them.

struct PageRequest {
    std::string method;
    std::string path;
    std::string body;
    // Headers; empty for one that isn't there.
    std::string host;
    std::string origin;
    std::string token;
    std::string contentType;
};

/// Returns the next piece of an endless answer, after a wait of at most about a second. False ends the answer.
using PageStream = std::function<bool(std::string& piece)>;

struct PageReply {
    int status = 200;
    std::string contentType = "text/plain; charset=utf-8";
    std::string body;
    /// Instead of a body. Destroyed when either side ends the answer.
    PageStream stream{};
};

/// Answers the browsers of this machine alone, on threads of its own.
class PageServer {
public:
    /// Called on any of the server's threads.
    using Handler = std::function<PageReply(const PageRequest& request)>;

    explicit PageServer(Handler handler);
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
