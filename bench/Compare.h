#pragma once

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <chrono>

namespace parcelory::bench {

template <class Work>
double secondsFor(Work &&work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The processor time of this process, and of its child processes that have ended.
inline double processorSeconds()
{
    double seconds = 0;
    for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage used{};
        getrusage(who, &used);
        seconds += double(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
                   double(used.ru_utime.tv_usec + used.ru_stime.tv_usec) / 1e6;
    }
    return seconds;
}

/// Times our way and the plain way of doing the same in turn, so that a busy machine slows both. The time shown is
/// ours; the counters are "plain_ms", "ratio" (ours over plain) and "cpu_ratio", the same of the processor time, which
/// hardly depends on what else runs. `tidy` runs after each of them and is not timed, but its processor time counts:
/// it may end a child process. Register with UseManualTime().
template <class Ours, class Plain, class Tidy>
void compare(benchmark::State &state, Ours ours, Plain plain, Tidy tidy)
{
    struct Spent {
        double seconds = 0, processor = 0;
    } oursTotal, plainTotal;
    const auto measure = [&tidy](Spent &total, auto &work) {
        const double before = processorSeconds(), seconds = secondsFor(work);
        tidy();
        total.seconds += seconds;
        total.processor += processorSeconds() - before;
        return seconds;
    };
    for ([[maybe_unused]] auto _ : state) {
        const double seconds = measure(oursTotal, ours);
        measure(plainTotal, plain);
        state.SetIterationTime(seconds);
    }
    state.counters["plain_ms"] = plainTotal.seconds * 1000 / double(state.iterations());
    state.counters["ratio"] = oursTotal.seconds / plainTotal.seconds;
    state.counters["cpu_ratio"] = oursTotal.processor / plainTotal.processor;
}

template <class Ours, class Plain>
void compare(benchmark::State &state, Ours ours, Plain plain)
{
    compare(state, ours, plain, [] {});
}

} // namespace parcelory::bench
