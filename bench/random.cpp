// Matrix draws against a plain loop of scalar draws filling a new matrix of the same size. Each
// benchmark reports `ratio`, library time over baseline time, measured alternately in the same run
// (bench/paired.h).
#include <benchmark/benchmark.h>

#include "arklib.h"
#include "bench/paired.h"

namespace {

constexpr int side = 1000;

template <class Draw>
void fill_by_loop(Draw draw) {
    Mm m(0, 0, 0, side, side, ak_double);
    double* p = m.addr();
    for (int k = 0; k < side * side; ++k) p[k] = draw();
    benchmark::DoNotOptimize(p);
}

void randM_1000(benchmark::State& state) {
    ak_bench::paired(
        state,
        [] {
            Mm m = randM(static_cast<double>(side));
            benchmark::DoNotOptimize(m.addr());
        },
        [] { fill_by_loop([] { return randM(); }); }, side * side);
}
BENCHMARK(randM_1000)->Unit(benchmark::kMillisecond);

void randn_1000(benchmark::State& state) {
    ak_bench::paired(
        state,
        [] {
            Mm m = randn(static_cast<double>(side));
            benchmark::DoNotOptimize(m.addr());
        },
        [] { fill_by_loop([] { return randn(); }); }, side * side);
}
BENCHMARK(randn_1000)->Unit(benchmark::kMillisecond);

}  // namespace
