#pragma once

#include "companion/embedded/embedded_files.h"
#include "companion/page/event_feed.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>

// What one page of vantrel consists of. Whoever has a page fills a `Page` and gives it to a `PageSession`, which serves
// it to the browsers of this machine:
//
//   - Files that the build embeds (`embed_files` in companion/CMakeLists.txt), among them index.html. A page links its
//     own files and those of companion/page/web by their names alone, such as "base.css".
//   - Routes: handlers for requests below /api/, by method and path, such as "GET /api/panel" and "POST /api/action".
//   - A feed, which each open tab of the page receives as server-sent events at "GET /api/events".
//
// The session's server has checked each request before a handler gets it: it names this machine, comes from no other
// page, bears the session's token, and declares a body as JSON. Handlers run on any of the server's threads, several at
// a time. In the page, companion/page/web/connection.js sends requests with the token and receives the events.

struct PageRequest {
    std::string method;
    std::string path;
    std::string body;
    // Headers; empty for one that isn't there.
    std::string host;
    std::string origin;
    std::string token;
    std::string contentType;
    /// A name that the open tab has given itself.
    std::string tab;
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

PageReply jsonReply(std::string json);

/// A reply with the status, such as 400, and the reason as its text.
PageReply refusal(int status, std::string_view reason);

using PageHandler = std::function<PageReply(const PageRequest& request)>;

/// What it refers to must outlive its session.
struct Page {
    /// What the program calls it, such as "The virtual cockpit".
    std::string title;
    const EmbeddedFiles& files;
    EventFeed& feed;
    std::map<std::string, PageHandler> routes{};
    /// Called with a tab's name when its stream of events begins.
    std::function<void(const std::string& tab)> onTabOpened = [](const std::string&) {};
    /// Called with its name when the stream has ended: the tab was closed, or has crashed, or the session ends.
    std::function<void(const std::string& tab)> onTabClosed = [](const std::string&) {};
    /// In bytes; a longer request is refused.
    std::size_t longestBody = 4096;
};
