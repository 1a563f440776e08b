#include "tests/system/support/page_process.h"

#include <chrono>
#include <csignal>
#include <optional>
#include <regex>
#include <utility>

namespace {

ChildProcessSettings withPageOptions(ChildProcessSettings settings) {
    settings.command.insert(settings.command.end(), {"--no-browser", "--port", "0"});
    return settings;
}

} // namespace

PageProcess::PageProcess(ChildProcessSettings settings) : process(withPageOptions(std::move(settings))) {
    const std::regex address("http://127\\.0\\.0\\.1:(\\d+)/#([0-9A-F]+)");
    std::string output;
    std::smatch match;
    const bool isPrinted = process.waitForOutput([&](const std::string& text) {
        output = text;
        return std::regex_search(output, match, address);
    });
    if (isPrinted) {
        page = std::make_unique<httplib::Client>("127.0.0.1", std::stoi(match[1]));
        token = {{"X-Page-Token", match[2]}};
    }
}

bool PageProcess::receives(const std::string& text) {
    const auto end = std::chrono::steady_clock::now() + ChildProcess::defaultLimit;
    std::string received;
    page->Get("/api/events", token, [&](const char* piece, std::size_t length) {
        received.append(piece, length);
        return received.find(text) == std::string::npos && std::chrono::steady_clock::now() < end;
    });
    return received.find(text) != std::string::npos;
}

bool PageProcess::act(const std::string& action) {
    const httplib::Result reply = page->Post("/api/action", token, action, "application/json");
    return reply && reply->status == 200;
}

std::optional<int> PageProcess::interrupt() {
    process.sendSignal(SIGINT);
    return process.waitForExit();
}
