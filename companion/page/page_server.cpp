#include "companion/page/page_server.h"

#include "companion/page/connection_threads.h"
#include "companion/page/listening_socket.h"

#include <cpp-httplib/httplib.h>

#include <thread>
#include <utility>

namespace {

constexpr const char* address = "127.0.0.1";
constexpr std::uint16_t firstUsualPort = 8080;
constexpr std::uint16_t lastUsualPort = 8099;

/// Only our own files and our own address; no site may frame the page; nothing stays in a cache.
void addHeaders(httplib::Response& response) {
    response.set_header("Content-Security-Policy",
                        "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; "
                        "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'");
    response.set_header("Cache-Control", "no-store");
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("Referrer-Policy", "no-referrer");
    response.set_header("Cross-Origin-Resource-Policy", "same-origin");
    response.set_header("Cross-Origin-Opener-Policy", "same-origin");
}

PageRequest pageRequest(const httplib::Request& request) {
    PageRequest result;
    result.method = request.method;
    result.path = request.path;
    result.body = request.body;
    result.host = request.get_header_value("Host");
    result.origin = request.get_header_value("Origin");
    result.token = request.get_header_value("X-Page-Token");
    result.contentType = request.get_header_value("Content-Type");
    result.tab = request.get_header_value("X-Page-Tab");
    return result;
}

void sendReply(PageReply reply, httplib::Response& response) {
    addHeaders(response);
    response.status = reply.status;
    if (!reply.stream) {
        response.set_content(reply.body, reply.contentType);
        return;
    }
    response.set_chunked_content_provider(reply.contentType,
                                          [stream = std::move(reply.stream)](std::size_t, httplib::DataSink& sink) {
                                              std::string piece;
                                              if (!stream(piece)) {
                                                  sink.done();
                                                  return true;
                                              }
                                              return sink.write(piece.data(), piece.size());
                                          });
}

} // namespace

class PageServer::Impl {
public:
    Impl(PageHandler handler, std::size_t longestBody) : handler(std::move(handler)) {
        server.new_task_queue = [] { return new ConnectionThreads; };
        // The library's own options would let a second server take the same port.
        server.set_socket_options([](socket_t socket) { takePortAlone(static_cast<std::intptr_t>(socket)); });
        server.set_payload_max_length(longestBody);
        server.set_tcp_nodelay(true);
        // A connection for each request: on loopback it costs nothing, and an idle one would delay the end.
        server.set_keep_alive_max_count(1);
        // A connection without a request delays the end by no more than this, in seconds. A browser on a busy machine
        // needs more than one, and a page that lacks one of its files stays empty.
        constexpr time_t patience = 5;
        server.set_keep_alive_timeout(patience);
        server.set_read_timeout(patience);
        const auto answer = [this](const httplib::Request& request, httplib::Response& response) {
            sendReply(this->handler(pageRequest(request)), response);
        };
        server.Get(".*", answer);
        server.Post(".*", answer);
    }

    bool bind(std::optional<std::uint16_t> wanted) {
        if (wanted == 0) {
            const int found = server.bind_to_any_port(address);
            taken = found > 0 ? static_cast<std::uint16_t>(found) : 0;
        } else if (wanted) {
            tryPort(*wanted);
        } else {
            for (std::uint16_t next = firstUsualPort; next <= lastUsualPort && taken == 0; ++next) {
                tryPort(next);
            }
        }
        return taken != 0;
    }

    std::uint16_t port() const { return taken; }

    void start() {
        thread = std::thread([this] { server.listen_after_bind(); });
        while (!server.is_running()) {
            std::this_thread::yield();
        }
    }

    void stop() {
        if (thread.joinable()) {
            server.stop();
            thread.join();
        }
    }

private:
    const PageHandler handler;
    httplib::Server server;
    std::uint16_t taken = 0;
    std::thread thread;

    void tryPort(std::uint16_t wanted) {
        if (server.bind_to_port(address, wanted)) {
            taken = wanted;
        }
    }
};

PageServer::PageServer(PageHandler handler, std::size_t longestBody)
    : impl(std::make_unique<Impl>(std::move(handler), longestBody)) {}

PageServer::~PageServer() {
    stop();
}

bool PageServer::bind(std::optional<std::uint16_t> wanted) {
    return impl->bind(wanted);
}

std::uint16_t PageServer::port() const {
    return impl->port();
}

void PageServer::start() {
    impl->start();
}

void PageServer::stop() {
    impl->stop();
}
