#pragma once

#include "mapping/led_pauses.h"
#include "mapping/mapping_context.h"
#include "platform/worker.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>

/// Keeps the boards' lights in step with the simulator: on its own thread, the output worker. It pushes to all boards
/// once no request has come for `outputs.debounceMs`, and once a second without any request, which also brings a board
/// that was just connected up to date.
class OutputDriver {
public:
    /// The references must outlive the driver. `simConnected`: whether the SimConnect session is up.
    OutputDriver(const Host& host, const MappingContext& context, const std::atomic<bool>& simConnected);

    /// False with the system's reason in `error` when there is no thread.
    bool start(std::string& error);
    /// Ends the worker. A request that waits for its debounce is still pushed.
    void requestStop();
    void join() { worker.join(); }

    /// Requests a push. Any thread.
    void requestUpdate();

    /// Reads the light's value from one of the module's texts, stores it and requests a push. Any thread.
    void onBacklightPayload(const std::string& text);

    /// Pauses a board's lights for a moment and writes them again afterwards. On the event worker.
    void pause(const std::string& deviceName, int index);

private:
    const Host& host;
    const MappingContext& context;
    const std::atomic<bool>& simConnected;
    Worker worker;

    // Guards `isRequested` and `lastRequest`. Only the clock is called under it.
    std::mutex mutex;
    std::condition_variable condition;
    bool isRequested = false;
    /// Nanoseconds of the monotonic clock.
    std::int64_t lastRequest = 0;

    // Guards `pauses`, which the event worker fills and the output worker reads and cleans. Nothing is called under it.
    std::mutex pauseMutex;
    LedPauses pauses;

    void run();
    /// Waits until a push is due. False when the worker must end instead.
    bool waitForTurn();
    void push();
    bool isPaused(const std::string& deviceName, int index);
};
