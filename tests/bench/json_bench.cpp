// The JSON reader against a well-kept one, on the same texts.

#include "config/json.h"

#include "tests/bench/bench_bytes.h"
#include "tests/support/numbered_controls.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

namespace {

constexpr const char* fileNames[] = {"buttons.json", "hid_event_map.json"};

std::string jsonText(const benchmark::State& state) {
    return numberedControls(static_cast<std::uint32_t>(state.range(1)), "(>H:AS1000_PFD_SOFTKEYS)")
        .at(fileNames[state.range(0)]);
}

void parseJson(benchmark::State& state) {
    const std::string text = jsonText(state);
    for (auto _ : state) {
        const JsonParseResult result = JsonParser::parse(text);
        if (!result.ok) {
            state.SkipWithError(result.error.c_str());
        }
        benchmark::DoNotOptimize(result.value);
    }
    countBytes(state, text);
}

void parseJsonPeer(benchmark::State& state) {
    const std::string text = jsonText(state);
    for (auto _ : state) {
        const nlohmann::json value = nlohmann::json::parse(text);
        benchmark::DoNotOptimize(value);
    }
    countBytes(state, text);
}

void files(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"file", "controls"});
    for (const int file : {0, 1}) {
        for (const int controls : {50, 1000}) {
            bench->Args({file, controls});
        }
    }
}

BENCHMARK(parseJson)->Apply(files);
BENCHMARK(parseJsonPeer)->Apply(files);

} // namespace
