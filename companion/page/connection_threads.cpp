#include "companion/page/connection_threads.h"

#include <system_error>
#include <utility>

namespace {

/// More than this many connections wait for one that ends.
constexpr std::size_t mostThreads = 512;

} // namespace

void ConnectionThreads::enqueue(std::function<void()> connection) {
    {
        const std::lock_guard lock(mutex);
        waiting.push_back(std::move(connection));
        if (waiting.size() > idle && threads.size() < mostThreads) {
            addThread();
        }
    }
    changed.notify_one();
}

void ConnectionThreads::addThread() {
    try {
        threads.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
        // The system gives no more threads. The connection waits for one of those that there are.
    }
}

void ConnectionThreads::shutdown() {
    {
        const std::lock_guard lock(mutex);
        ending = true;
    }
    changed.notify_all();
    // No connection comes any more, so no thread either.
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void ConnectionThreads::work() {
    std::unique_lock lock(mutex);
    while (!ending || !waiting.empty()) {
        if (waiting.empty()) {
            ++idle;
            changed.wait(lock);
            --idle;
            continue;
        }
        const std::function<void()> connection = std::move(waiting.front());
        waiting.pop_front();
        lock.unlock();
        connection();
        lock.lock();
    }
}
