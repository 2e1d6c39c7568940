// Times a library form against its baseline in one run: both run alternately in every iteration,
// each on the CPU clock of the calling thread, so that a change in the load of the machine falls on
// both alike. Reports `ratio` (library time over baseline time) and the time of one operation of each.
#pragma once
#include <benchmark/benchmark.h>
#include <time.h>

namespace ak_bench {

inline double thread_seconds() {
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

template <class Lib, class Base>
void paired(benchmark::State& state, Lib lib, Base base, double ops_per_call) {
    double t_lib = 0, t_base = 0;
    bool lib_first = true;
    for (auto _ : state) {
        double t0 = thread_seconds();
        if (lib_first)
            lib();
        else
            base();
        double t1 = thread_seconds();
        if (lib_first)
            base();
        else
            lib();
        double t2 = thread_seconds();
        t_lib += lib_first ? t1 - t0 : t2 - t1;
        t_base += lib_first ? t2 - t1 : t1 - t0;
        lib_first = !lib_first;
    }
    double n = static_cast<double>(state.iterations());
    state.counters["ratio"] = t_base > 0 ? t_lib / t_base : 0;
    state.counters["lib_ns_op"] = 1e9 * t_lib / n / ops_per_call;
    state.counters["base_ns_op"] = 1e9 * t_base / n / ops_per_call;
}

}  // namespace ak_bench
