#include "platform/portable_host.h"

#include <cstdlib>
#include <utility>

namespace {

std::optional<std::string> environmentVariable(const std::string& name) {
    // Nothing in the program changes its environment.
    const char* value = std::getenv(name.c_str()); // NOLINT(concurrency-mt-unsafe)
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

void sleepFor(std::chrono::milliseconds duration) {
    std::this_thread::sleep_for(duration);
}

std::int64_t now() {
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart).count();
}

std::thread startThread(std::function<void()> body) {
    return std::thread(std::move(body));
}

} // namespace

Host portableHost() {
    Host host;
    host.environmentVariable = environmentVariable;
    host.sleepFor = sleepFor;
    host.now = now;
    host.startThread = startThread;
    return host;
}
