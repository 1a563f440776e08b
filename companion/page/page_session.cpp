#include "companion/page/page_session.h"

#include "companion/interrupt/interrupt.h"
#include "companion/page/open_browser.h"
#include "companion/page/request_checks.h"
#include "platform/platform.h"

#include <chrono>
#include <thread>

namespace {

void waitForInterrupt() {
    while (!Interrupt::requested()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

} // namespace

PageSession::PageSession(const Page& page)
    : page(page),
      token(randomToken()),
      handler(page, token),
      server([this](const PageRequest& request) { return handler.answer(request); }, page.longestBody) {}

bool PageSession::open(std::optional<std::uint16_t> port, std::string& error) {
    if (!server.bind(port)) {
        error =
            port ? "port " + std::to_string(*port) +
                       " isn't available: another program uses it, or it needs more rights; choose another with --port"
                 : std::string("none of the usual ports is free; choose one with --port");
        return false;
    }
    handler.setPort(server.port());
    Interrupt::catchRequests(systemPlatform().host);
    return true;
}

void PageSession::run(bool inBrowser, std::ostream& screen) {
    server.start();
    screen << page.title << " is at\n\n    " << address() << "\n\nCtrl+C ends it.\n" << std::flush;
    if (inBrowser) {
        openBrowser(address());
    }
    waitForInterrupt();
    screen << '\n' << page.title << " ends.\n" << std::flush;
    // The streams of events end with the feed, and with them the last requests.
    page.feed.close();
    server.stop();
}

std::string PageSession::address() const {
    return "http://127.0.0.1:" + std::to_string(server.port()) + "/#" + token;
}
