#pragma once

#include "platform/platform.h"
#include "tests/support/wait_until.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <system_error>

/// A process and its surroundings in memory: sleeps that a test can hold and let go, a clock that it can set, a process
/// list, threads that can be refused. Usable from any thread. It must outlive the users of its record.
///
/// Sleeps return after at most one millisecond at first. After `holdSleeps` each of them lasts until the test ends it,
/// so that a worker can be walked from sleep to sleep: `waitForSleep` says that it has come to one, and `endSleep`
/// sends it to the next.
class FakeHost {
public:
    FakeHost() = default;
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    Host record() {
        Host host;
        host.findProcess = [this](const auto& visit) { return findProcess(visit); };
        host.executablePath = [this] { return executable; };
        host.commonDataFolder = [this] { return dataFolder; };
        host.environmentVariable = [this](const std::string& name) { return variable(name); };
        host.acquireSingleInstance = [this](const std::string&) { return instance; };
        host.attachConsole = [this] { ++consoleAttachments; };
        host.installControlHandler = [this](ControlHandler handler) { controlHandler = handler; };
        host.sleepFor = [this](std::chrono::milliseconds duration) { sleepFor(duration); };
        host.now = [this] { return now(); };
        host.startThread = [this](std::function<void()> body) { return startThread(std::move(body)); };
        return host;
    }

    // Sleeps.

    void holdSleeps() {
        const std::lock_guard lock(mutex);
        holding = true;
    }

    /// Ends all sleeps that are held, and those to come after a millisecond at most.
    void letSleepsPass() {
        const std::lock_guard lock(mutex);
        holding = false;
        sleepsEnded = sleepRecord.size();
        changed.notify_all();
    }

    /// Ends the oldest sleep that is held; with none held, the next one ends at once.
    void endSleep() {
        const std::lock_guard lock(mutex);
        ++sleepsEnded;
        changed.notify_all();
    }

    /// Waits until a sleep is held, and gives its milliseconds; -1 when none comes.
    std::int64_t waitForSleep() {
        std::unique_lock lock(mutex);
        const bool held = changed.wait_for(lock, std::chrono::seconds(30), [this] { return heldSleeps() > 0; });
        return held ? sleepRecord[sleepsEnded] : -1;
    }

    /// `endSleep`, then `waitForSleep`.
    std::int64_t nextSleep() {
        endSleep();
        return waitForSleep();
    }

    /// The milliseconds of all sleeps begun, in order.
    std::vector<std::int64_t> sleeps() {
        const std::lock_guard lock(mutex);
        return sleepRecord;
    }

    // The clock, real until it is set.

    void setNow(std::int64_t nanoseconds) {
        const std::lock_guard lock(mutex);
        fixedNow = nanoseconds;
    }

    // The process list: none at first.

    void setProcesses(std::vector<std::string> names) {
        const std::lock_guard lock(mutex);
        processes = std::move(names);
    }

    std::size_t processScans() {
        const std::lock_guard lock(mutex);
        return scans;
    }

    // Threads.

    /// Lets `count` more threads start; those after them are refused with "resource unavailable".
    void refuseThreadsAfter(std::size_t count) {
        const std::lock_guard lock(mutex);
        threadLimit = threadsStartedSoFar + count;
    }

    std::size_t threadsStarted() {
        const std::lock_guard lock(mutex);
        return threadsStartedSoFar;
    }

    /// How many of the threads have run to their end. A thread that was joined is among them.
    std::size_t threadsEnded() const { return *threadsEndedSoFar; }

    /// The text of the exception that a refused thread start throws.
    static std::string refusalText() { return refusal().what(); }

    // Set before the record is used.
    std::string executable;
    std::string dataFolder;
    std::map<std::string, std::string> variables;
    SingleInstance instance = SingleInstance::Acquired;

    // What was asked for.
    std::atomic<int> consoleAttachments{0};
    std::atomic<ControlHandler> controlHandler{nullptr};

private:
    static std::system_error refusal() {
        return {std::make_error_code(std::errc::resource_unavailable_try_again), "thread refused"};
    }

    std::size_t heldSleeps() const {
        return holding && sleepRecord.size() > sleepsEnded ? sleepRecord.size() - sleepsEnded : 0;
    }

    bool findProcess(const std::function<bool(std::string_view)>& visit) {
        std::vector<std::string> names;
        {
            const std::lock_guard lock(mutex);
            ++scans;
            names = processes;
        }
        return std::any_of(names.begin(), names.end(), visit);
    }

    std::optional<std::string> variable(const std::string& name) {
        const std::lock_guard lock(mutex);
        const auto found = variables.find(name);
        return found == variables.end() ? std::nullopt : std::optional(found->second);
    }

    void sleepFor(std::chrono::milliseconds duration) {
        std::unique_lock lock(mutex);
        const std::size_t number = sleepRecord.size();
        sleepRecord.push_back(duration.count());
        if (!holding) {
            sleepsEnded = sleepRecord.size();
            lock.unlock();
            std::this_thread::sleep_for(std::min(duration, std::chrono::milliseconds(1)));
            return;
        }
        changed.notify_all();
        changed.wait(lock, [&] { return !holding || sleepsEnded > number; });
    }

    std::int64_t now() {
        const std::lock_guard lock(mutex);
        const auto real = std::chrono::steady_clock::now().time_since_epoch();
        return fixedNow.value_or(std::chrono::duration_cast<std::chrono::nanoseconds>(real).count());
    }

    std::thread startThread(std::function<void()> body) {
        {
            const std::lock_guard lock(mutex);
            if (threadLimit && threadsStartedSoFar >= *threadLimit) {
                throw refusal();
            }
            ++threadsStartedSoFar;
        }
        return std::thread([body = std::move(body), ended = threadsEndedSoFar] {
            body();
            ++*ended;
        });
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool holding = false;
    // Sleeps are numbered by their place in the record; those below `sleepsEnded` may return.
    std::vector<std::int64_t> sleepRecord;
    std::size_t sleepsEnded = 0;
    std::optional<std::int64_t> fixedNow;
    std::vector<std::string> processes;
    std::size_t scans = 0;
    std::size_t threadsStartedSoFar = 0;
    // Shared with the threads: a detached one may outlive this host.
    const std::shared_ptr<std::atomic<std::size_t>> threadsEndedSoFar = std::make_shared<std::atomic<std::size_t>>(0);
    std::optional<std::size_t> threadLimit;
};
