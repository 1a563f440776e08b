#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

/// The figure is given in bytes a second too: each iteration works on the whole text.
inline void countBytes(benchmark::State& state, const std::string& text) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
