#pragma once

#include <benchmark/benchmark.h>

#include <chrono>

namespace parcelory::bench {

template <class Work>
double secondsFor(Work &&work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Times our way and the plain way of doing the same in turn, so that a busy machine slows both. The time shown is
/// ours; the counters are "plain_ms" and "ratio" (ours over plain). `tidy` runs after each of them and is not timed.
/// Register with UseManualTime().
template <class Ours, class Plain, class Tidy>
void compare(benchmark::State &state, Ours ours, Plain plain, Tidy tidy)
{
    double oursTotal = 0, plainTotal = 0;
    for ([[maybe_unused]] auto _ : state) {
        const double seconds = secondsFor(ours);
        oursTotal += seconds;
        tidy();
        plainTotal += secondsFor(plain);
        tidy();
        state.SetIterationTime(seconds);
    }
    state.counters["plain_ms"] = plainTotal * 1000 / double(state.iterations());
    state.counters["ratio"] = oursTotal / plainTotal;
}

template <class Ours, class Plain>
void compare(benchmark::State &state, Ours ours, Plain plain)
{
    compare(state, ours, plain, [] {});
}

} // namespace parcelory::bench
