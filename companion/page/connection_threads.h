#pragma once

#include <cpp-httplib/httplib.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

/// The server's threads, one for each connection that is open at the same time: with a fixed few, as the library has
/// them, that many slow clients would block everybody else. Threads are kept for later connections.
class ConnectionThreads : public httplib::TaskQueue {
public:
    void enqueue(std::function<void()> connection) override;
    /// Waits for the connections that are still open.
    void shutdown() override;

private:
    // Guards all that follows.
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> waiting;
    std::vector<std::thread> threads;
    std::size_t idle = 0;
    bool ending = false;

    /// Called with the mutex held.
    void addThread();
    void work();
};
