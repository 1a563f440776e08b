// The hot path behind the decoder.

#include "mapping/hid_event_queue.h"
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

/// A press and a release of one button, with that many other events queued. Both are queued too, so a new queue comes
/// before it has grown by much.
void queueEvent(benchmark::State& state) {
    constexpr int pairsPerRound = 50;
    HidEventQueue filled;
    for (int i = 0; i < state.range(0); ++i) {
        filled.push({buttonEvent(static_cast<std::uint16_t>(100 + i % 50), 1), deviceName, 0});
    }
    HidEventQueue queue;
    int pairs = pairsPerRound;
    for (auto _ : state) {
        if (pairs == pairsPerRound) {
            state.PauseTiming();
            queue = filled;
            pairs = 0;
            state.ResumeTiming();
        }
        queue.push({buttonEvent(21, 1), deviceName, 0});
        queue.push({buttonEvent(21, 0), deviceName, 0});
        ++pairs;
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(queueEvent)->Arg(0)->Arg(100)->Arg(10000)->Iterations(2000);

/// The floor of the first: a queue of the same elements.
void queueAlone(benchmark::State& state) {
    std::deque<QueuedHidEvent> queue;
    for (auto _ : state) {
        queue.push_back({buttonEvent(21, 1), deviceName, 0});
        queue.push_back({buttonEvent(21, 0), deviceName, 0});
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

/// Queueing a command: what the event worker pays for it.
void queueRpn(benchmark::State& state) {
    BenchBridge bridge;
    const auto kind = static_cast<RpnKind>(state.range(0));
    const std::string command = "1 (>K:HEADING_BUG_INC)";
    std::string error;
    std::uint64_t queued = 0;
    for (auto _ : state) {
        if (!bridge.mobiflight.queueRpn(command, kind, 1, error)) {
            state.SkipWithError(error.c_str());
        }
        // Keeps the queue from growing without end.
        if (++queued % 4096 == 0) {
            state.PauseTiming();
            bridge.mobiflight.cancelRpn(command);
            state.ResumeTiming();
        }
    }
}
BENCHMARK(queueRpn)->ArgName("kind")->Arg(0)->Arg(1)->Arg(2);

} // namespace
