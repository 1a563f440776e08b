#include "companion/page/page_request_handler.h"

#include "companion/page/request_checks.h"
#include "companion/page/shared_web_files.h"

#include <chrono>
#include <string_view>
#include <utility>

namespace {

constexpr const char* firstPage = "index.html";
/// The longest time without data on an event stream; also the time after which a closed tab is detected.
constexpr std::chrono::milliseconds longestSilence{1000};
/// A browser opens six connections to a program, over all of its tabs. One must be left for requests.
constexpr int mostListeners = 5;
constexpr int forbidden = 403;
constexpr int notFound = 404;
constexpr int unsupportedType = 415;
constexpr int unavailable = 503;

std::string contentTypeOf(std::string_view name) {
    if (name.ends_with(".html")) {
        return "text/html; charset=utf-8";
    }
    if (name.ends_with(".css")) {
        return "text/css; charset=utf-8";
    }
    return name.ends_with(".svg") ? "image/svg+xml" : "text/javascript; charset=utf-8";
}

PageReply nothingHere() {
    return refusal(notFound, "there is nothing here");
}

/// A tab that listens.
class Listener {
public:
    Listener(const Page& page, std::string tab, std::shared_ptr<std::atomic<int>> listeners)
        : page(page), tab(std::move(tab)), listeners(std::move(listeners)) {
        ++*this->listeners;
        page.onTabOpened(this->tab);
    }
    ~Listener() {
        --*listeners;
        page.onTabClosed(tab);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    bool next(std::string& piece) { return page.feed.next(cursor, longestSilence, piece); }

private:
    const Page& page;
    const std::string tab;
    const std::shared_ptr<std::atomic<int>> listeners;
    EventFeed::Cursor cursor;
};

} // namespace

PageRequestHandler::PageRequestHandler(const Page& page, std::string token) : page(page), token(std::move(token)) {}

PageReply PageRequestHandler::answer(const PageRequest& request) const {
    const RequestMarks marks{request.host, request.origin, request.token, request.contentType};
    const bool isFile = request.method == "GET" && !request.path.starts_with("/api/");
    const std::string_view reason = isFile ? refusalOf(marks, port) : refusalOfAction(marks, port, token);
    if (!reason.empty()) {
        return refusal(forbidden, reason);
    }
    return isFile ? file(request.path.substr(1)) : route(request);
}

PageReply PageRequestHandler::file(const std::string& name) const {
    const std::string wanted = name.empty() ? firstPage : name;
    for (const EmbeddedFiles* const files : {&page.files, &sharedWebFiles()}) {
        if (const auto found = files->find(wanted); found != files->end()) {
            return {200, contentTypeOf(wanted), found->second};
        }
    }
    return nothingHere();
}

PageReply PageRequestHandler::route(const PageRequest& request) const {
    if (request.method == "GET" && request.path == "/api/events") {
        return events(request.tab);
    }
    const auto found = page.routes.find(request.method + ' ' + request.path);
    if (found == page.routes.end()) {
        return nothingHere();
    }
    if (request.method == "POST" && !saysJson(request.contentType)) {
        return refusal(unsupportedType, "an action must be application/json");
    }
    return found->second(request);
}

PageReply PageRequestHandler::events(const std::string& tab) const {
    if (*listeners >= mostListeners) {
        return refusal(unavailable,
                       "This page is open in five tabs already, and a browser can't serve more of them: close one.");
    }
    PageReply reply{200, "text/event-stream", ""};
    reply.stream = [listener = std::make_shared<Listener>(page, tab, listeners)](std::string& piece) {
        return listener->next(piece);
    };
    return reply;
}
