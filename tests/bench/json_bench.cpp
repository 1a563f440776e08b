// The JSON reader against a well-kept one, on the same texts.

#include "config/json.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <string>

namespace {

/// A command file of the shape that users have, with that many controls.
std::string commandFile(int controls) {
    std::string text = "{\n  \"buttons\": [\n";
    for (int i = 0; i < controls; ++i) {
        const std::string number = std::to_string(i);
        text += R"json(    {"name": "SOFTKEY_)json" + number +
                R"json(", "commands": {"PRESS": {"PFD": "(>H:AS1000_PFD_SOFTKEYS_)json" + number +
                R"json()", "MFD": "(>H:AS1000_MFD_SOFTKEYS_)json" + number +
                R"json()"}, "RELEASE": {"DEFAULT": ""}}})json" + (i + 1 < controls ? ",\n" : "\n");
    }
    return text + "  ],\n  \"knobs\": []\n}\n";
}

/// An event map of that many numbers.
std::string eventMap(int controls) {
    std::string text = R"({"event_types": {"BUTTON": 1, "ENCODER": 2}, "control_ids": {)";
    for (int i = 0; i < controls; ++i) {
        text += (i == 0 ? "\"CONTROL_" : ", \"CONTROL_") + std::to_string(i) + "\": " + std::to_string(i);
    }
    return text + "}}";
}

std::string textOf(const benchmark::State& state) {
    const int controls = static_cast<int>(state.range(1));
    return state.range(0) == 0 ? commandFile(controls) : eventMap(controls);
}

void countBytes(benchmark::State& state, const std::string& text) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void parseJson(benchmark::State& state) {
    const std::string text = textOf(state);
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
    const std::string text = textOf(state);
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
