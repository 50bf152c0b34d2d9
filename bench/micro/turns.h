#pragma once

#include <benchmark/benchmark.h>
#include <valgrind/callgrind.h>

/// Measures @p work. Under callgrind, which otherwise collects nothing, its instructions are counted, without
/// those of a first turn that fills caches and resolves symbols.
template <typename Work>
void measureTurns(benchmark::State &state, const Work &work)
{
    benchmark::DoNotOptimize(work());
    for ([[maybe_unused]] const auto turn : state) {
        CALLGRIND_TOGGLE_COLLECT;
        benchmark::DoNotOptimize(work());
        CALLGRIND_TOGGLE_COLLECT;
    }
}
