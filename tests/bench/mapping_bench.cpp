// The hot path behind the decoder.

#include "tests/bench/bench_bridge.h"

#include <benchmark/benchmark.h>

#include <deque>

namespace {

const std::string deviceName = "E66138A1B2C3D4E5";

HidProtocol::HidEvent buttonEvent(std::uint16_t controlId, std::int8_t value) {
    HidProtocol::HidEvent event;
    event.type = HidProtocol::eventTypeButton;
    event.controlId = controlId;
    event.value = value;
    return event;
}

/// The engine with its event worker kept busy, so that what is submitted stays queued.
class StalledEngine {
public:
    StalledEngine() : host(systemPlatform().host), engine(stallingHost()) {
        std::string error;
        engine.start(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, error);
    }
    ~StalledEngine() {
        released = true;
        engine.stop();
    }
    StalledEngine(const StalledEngine&) = delete;
    StalledEngine& operator=(const StalledEngine&) = delete;

    const Host host;
    std::atomic<bool> released{false};
    std::atomic<int> threads{0};
    MappingEngine engine;

private:
    /// Holds back the first thread, which is the event worker.
    Host stallingHost() {
        Host result = host;
        result.startThread = [this](std::function<void()> body) {
            const bool isEventWorker = threads++ == 0;
            return std::thread([this, isEventWorker, work = std::move(body)] {
                while (isEventWorker && !released) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                }
                work();
            });
        };
        return result;
    }
};

/// A press and a release of one button, with that many other events queued; both stay queued, so each iteration is
/// timed on a queue that has grown by little.
void submitEvent(benchmark::State& state) {
    const auto queued = static_cast<int>(state.range(0));
    constexpr int pairsPerRound = 50;
    std::unique_ptr<StalledEngine> stalled;
    int pairs = pairsPerRound;
    for (auto _ : state) {
        if (pairs == pairsPerRound) {
            state.PauseTiming();
            stalled = std::make_unique<StalledEngine>();
            for (int i = 0; i < queued; ++i) {
                stalled->engine.submitEvent(buttonEvent(static_cast<std::uint16_t>(100 + i % 50), 1), deviceName, 0);
            }
            pairs = 0;
            state.ResumeTiming();
        }
        stalled->engine.submitEvent(buttonEvent(21, 1), deviceName, 0);
        stalled->engine.submitEvent(buttonEvent(21, 0), deviceName, 0);
        ++pairs;
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(submitEvent)->Arg(0)->Arg(100)->Arg(10000)->Iterations(2000);

/// The floor of the first: a queue of the same elements, and its lock.
void queueAlone(benchmark::State& state) {
    std::mutex mutex;
    std::deque<QueuedHidEvent> queue;
    for (auto _ : state) {
        for (const std::int8_t value : {std::int8_t{1}, std::int8_t{0}}) {
            QueuedHidEvent entry{buttonEvent(21, value), deviceName, 0};
            const std::lock_guard lock(mutex);
            queue.push_back(std::move(entry));
        }
        const std::lock_guard lock(mutex);
        queue.clear();
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(queueAlone);

/// From submitEvent to SimConnect_SetClientData, in bursts of presses: each is two writes.
void resolveEvents(benchmark::State& state) {
    BenchBridge bridge;
    if (!bridge.startEngine()) {
        state.SkipWithError("the engine doesn't start");
        return;
    }
    constexpr std::uint64_t burst = 1000;
    const HidProtocol::HidEvent press = buttonEvent(22, 1);
    for (auto _ : state) {
        const std::uint64_t before = bridge.simulator.writes;
        for (std::uint64_t i = 0; i < burst; ++i) {
            bridge.engine.submitEvent(press, deviceName, 0);
        }
        bridge.waitForWrites(before + 2 * burst);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(burst));
}
BENCHMARK(resolveEvents)->UseRealTime();

} // namespace
