#pragma once

#include "companion/page/page_request_handler.h"
#include "companion/page/page_server.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

/// Serves one page until the program is interrupted. A new session has a new token, so that old tabs can't act on it.
class PageSession {
public:
    explicit PageSession(const Page& page);

    /// Takes a port, the first free one of the usual if none is given, and from now on waits to be interrupted. False
    /// with the reason in `error`.
    bool open(std::optional<std::uint16_t> port, std::string& error);
    /// After `open`: answers requests, prints the page's address, shows it in the browser if that is wanted, and
    /// returns when the program is interrupted. By then the feed is closed, and no handler runs any more.
    void run(bool inBrowser, std::ostream& screen);

private:
    const Page& page;
    const std::string token;
    PageRequestHandler handler;
    PageServer server;

    std::string address() const;
};
