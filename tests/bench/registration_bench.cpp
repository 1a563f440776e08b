// An edit's time for each byte must not grow with the file: the same shapes in two sizes, beside a plain copy.

#include "registration/exe_xml_registrar.h"
#include "tests/bench/bench_bytes.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

namespace {

/// What the file is full of. Each is the worst of its kind for a scan that looks too far.
const char* const shapes[] = {
    "    <Launch.Addon>\r\n        <Name>Tool</Name>\r\n        <Path>C:\\tool.exe</Path>\r\n    </Launch.Addon>\r\n",
    "<Launch.Addon></Launch.Addon>\n", "<Launch.Addo", "<<<<<<<<"};

std::string exeXmlText(const benchmark::State& state) {
    const std::string piece = shapes[state.range(0)];
    std::string text = "<SimBase.Document>\r\n";
    while (text.size() < static_cast<std::size_t>(state.range(1))) {
        text += piece;
    }
    return text + "\r\n</SimBase.Document>\r\n";
}

void registerAddon(benchmark::State& state) {
    const std::string text = exeXmlText(state);
    for (auto _ : state) {
        const std::string result = ExeXmlRegistrar::applyRegistration(text, "Bridge", "C:\\bridge.exe", "");
        benchmark::DoNotOptimize(result.data());
    }
    countBytes(state, text);
}

void registerAddonFloor(benchmark::State& state) {
    const std::string text = exeXmlText(state);
    for (auto _ : state) {
        const std::string result = text;
        benchmark::DoNotOptimize(result.data());
    }
    countBytes(state, text);
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"shape", "bytes"});
    for (const int shape : {0, 1, 2, 3}) {
        for (const int bytes : {100'000, 10'000'000}) {
            bench->Args({shape, bytes});
        }
    }
}

BENCHMARK(registerAddon)->Apply(sizes);
BENCHMARK(registerAddonFloor)->ArgNames({"shape", "bytes"})->Args({0, 100'000})->Args({0, 10'000'000});

} // namespace
