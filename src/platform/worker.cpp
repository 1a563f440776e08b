#include "platform/worker.h"

#include <exception>
#include <utility>

bool Worker::start(const Host& host, std::function<void()> body, const std::string& failure, std::string& error) {
    // Before the thread: its body would end at once if it saw the flag down.
    isRunning = true;
    try {
        thread = host.startThread(std::move(body));
    } catch (const std::exception& reason) {
        isRunning = false;
        error = failure + reason.what();
        return false;
    }
    return true;
}

void Worker::join() {
    if (thread.joinable()) {
        thread.join();
    }
}
