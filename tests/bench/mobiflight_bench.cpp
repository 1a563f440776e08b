// Queueing a command: what the event worker pays for it.

#include "tests/bench/bench_bridge.h"

#include <benchmark/benchmark.h>

namespace {

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
        // Lets the worker catch up now and then, so that the queue doesn't grow without end.
        if (++queued % 4096 == 0) {
            state.PauseTiming();
            while (bridge.simulator.writes.load() < 3) {
                std::this_thread::yield();
            }
            bridge.mobiflight.cancelRpn(command);
            state.ResumeTiming();
        }
    }
}
BENCHMARK(queueRpn)->ArgName("kind")->Arg(0)->Arg(1)->Arg(2);

} // namespace
