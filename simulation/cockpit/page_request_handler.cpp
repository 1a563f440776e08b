#include "simulation/cockpit/page_request_handler.h"

#include "simulation/cockpit/embedded_files.h"
#include "simulation/cockpit/request_checks.h"

#include <chrono>
#include <string_view>
#include <utility>

namespace {

constexpr const char* firstPage = "index.html";
/// The longest time without data on an event stream; also the time after which a closed page is detected.
constexpr std::chrono::milliseconds longestSilence{1000};
/// The server's threads must also suffice for requests.
constexpr int mostListeners = 12;
constexpr int forbidden = 403;
constexpr int notFound = 404;

std::string contentTypeOf(std::string_view name) {
    if (name.ends_with(".html")) {
        return "text/html; charset=utf-8";
    }
    if (name.ends_with(".css")) {
        return "text/css; charset=utf-8";
    }
    return name.ends_with(".svg") ? "image/svg+xml" : "text/javascript; charset=utf-8";
}

PageReply file(std::string name) {
    if (name.empty()) {
        name = firstPage;
    }
    const auto found = webFiles().find(name);
    if (found == webFiles().end()) {
        return {notFound, "text/plain; charset=utf-8", "there is nothing here\n"};
    }
    return {200, contentTypeOf(name), std::string(found->second)};
}

PageReply refusal(int status, std::string_view reason) {
    return {status, "text/plain; charset=utf-8", std::string(reason) + '\n'};
}

/// A page that listens. When the last one closes, all buttons are released.
class Listener {
public:
    Listener(CockpitController& controller, std::shared_ptr<std::atomic<int>> listeners)
        : controller(controller), listeners(std::move(listeners)) {
        ++*this->listeners;
    }
    ~Listener() {
        if (--*listeners == 0) {
            controller.releaseButtons();
        }
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    bool next(std::string& piece) { return controller.feed().next(cursor, longestSilence, piece); }

private:
    CockpitController& controller;
    const std::shared_ptr<std::atomic<int>> listeners;
    EventFeed::Cursor cursor;
};

} // namespace

PageRequestHandler::PageRequestHandler(CockpitController& controller, std::string token)
    : controller(controller), token(std::move(token)) {}

PageReply PageRequestHandler::answer(const PageRequest& request) const {
    const RequestMarks marks{request.host, request.origin, request.token, request.contentType};
    const bool isFile = request.method == "GET" && !request.path.starts_with("/api/");
    const std::string_view reason = isFile ? refusalOf(marks, port) : refusalOfAction(marks, port, token);
    if (!reason.empty()) {
        return refusal(forbidden, reason);
    }
    if (isFile) {
        return file(request.path.substr(1));
    }
    if (request.method == "GET" && request.path == "/api/panel") {
        return {200, "application/json", controller.panel()};
    }
    if (request.method == "GET" && request.path == "/api/events") {
        return events();
    }
    return request.method == "POST" && request.path == "/api/action" ? action(request)
                                                                     : refusal(notFound, "there is nothing here");
}

PageReply PageRequestHandler::action(const PageRequest& request) const {
    constexpr int badRequest = 400;
    constexpr int unsupportedType = 415;
    if (!saysJson(request.contentType)) {
        return refusal(unsupportedType, "an action is application/json");
    }
    const JsonParseResult parsed = JsonParser::parse(request.body);
    std::string error = parsed.error;
    if (!parsed.ok || !controller.act(parsed.value, error)) {
        return refusal(badRequest, error);
    }
    return {200, "application/json", "{}"};
}

PageReply PageRequestHandler::events() const {
    constexpr int unavailable = 503;
    if (*listeners >= mostListeners) {
        return refusal(unavailable, "too many pages are open");
    }
    PageReply reply{200, "text/event-stream", ""};
    reply.stream = [listener = std::make_shared<Listener>(controller, listeners)](std::string& piece) {
        return listener->next(piece);
    };
    return reply;
}
